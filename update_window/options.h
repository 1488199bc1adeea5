// The command line of quillory-update-window.
#pragma once
#include <optional>
#include <string>
#include <vector>

namespace quillory::window {

struct Options {
  bool isFirst = false;      ///< no version is installed yet
  int atMostSeconds = 0;     ///< how long it may take; 0: as long as it takes
  std::string properties{};  ///< path of the launch properties
  std::string ownFolder{};   ///< "" for quillory-update's own choice
};

/// Nothing, with the reason in `why`, for what cannot be understood; "" for a question for help.
std::optional<Options> parseOptions(const std::vector<std::string>& arguments, std::string& why);

const char* helpText();

/// The run of quillory-update at `program` that the options ask for.
std::vector<std::string> commandFor(const Options& options, const std::string& program);

/// The application's name that the properties say; "the application" where they say none.
std::string appNameIn(const std::string& propertiesFile);

}  // namespace quillory::window
