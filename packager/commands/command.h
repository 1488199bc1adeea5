// A command as data: what it is called, what it can be given, and what it does with that. --help,
// completion scripts and manual pages say what stands here.
#pragma once
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "packager/report/reporter.h"

namespace quillory::pack {

/// Something that a command can be given. What an argument sets belongs to its command, and what
/// it was before is the default: arguments that are not given, and empty texts, leave it as it is.
struct Argument {
  /// A switch, a number, a text, or as many texts as are given.
  using Destination =
      std::variant<bool*, int*, std::optional<int>*, std::string*, std::vector<std::string>*>;

  /// What it is called in the help when it is known by its place: "FILE". An option has its dashes:
  /// "--bits", "-o,--output".
  std::string name;
  std::string description{};
  Destination into = static_cast<bool*>(nullptr);
  bool isRequired = false;
  std::vector<std::string> choices{};                ///< all that a text can be; empty: anything
  std::vector<int> numbers{};                        ///< all that a number can be; empty: any
  std::optional<std::pair<int, int>> numberRange{};  ///< the least and the largest number
};

/// An argument with a dash, which can stand anywhere.
bool isOption(const Argument& argument);

/// Its names one by one: "-o" and "--output".
std::vector<std::string> namesOf(const Argument& argument);

/// What an argument is when it is not given, for people; "" when it is nothing then. To be asked
/// before a command line was read.
std::string defaultOf(const Argument& argument);

/// Copies of a command share what its arguments set.
struct Command {
  std::string name;
  std::string description;
  std::string example;
  std::vector<Argument> arguments;  ///< in the order of the help
  /// Does it with what the arguments have set by now; the result is the exit status. Throws
  /// RejectedInput and PackError.
  std::function<int(Reporter&)> run;
  /// What is behind "--" on the command line, options of another program say: a list of texts, by
  /// its name; without a name the command takes none.
  Argument behind{};
};

}  // namespace quillory::pack
