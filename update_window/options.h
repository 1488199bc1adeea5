// The command line of quillory-update-window.
#pragma once
#include <optional>
#include <string>
#include <vector>

namespace quillory::window {

/// Why there is a window.
enum class Occasion {
  kFirst,   ///< no version is installed yet
  kUpdate,  ///< a start waits for the update
  kAsk,     ///< the application runs, and its user is asked
};

struct Options {
  Occasion occasion = Occasion::kUpdate;
  int atMostSeconds = 0;     ///< how long it may take; 0: as long as it takes
  std::string properties{};  ///< path of the launch properties
  std::string ownFolder{};   ///< "" for quillory-update's own choice
};

/// Nothing, with the reason in `why`, for what cannot be understood; "" for a question for help.
std::optional<Options> parseOptions(const std::vector<std::string>& arguments, std::string& why);

const char* helpText();

/// A run of quillory-update at `program` that does `words`, for the installation of the options.
std::vector<std::string> commandFor(const Options& options, const std::string& program,
                                    const std::vector<std::string>& words = {"install"});

/// The application's name that the properties say; "the application" where they say none.
std::string appNameIn(const std::string& propertiesFile);

}  // namespace quillory::window
