#include "packager/cli/argument_parser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "packager/cli/program.h"
#include "packager/report/joined.h"
#include "packager/report/nearest_name.h"

namespace quillory::pack {
namespace {

// Adds an argument that sets what stands behind the pointer.
class Adder {
 public:
  Adder(CLI::App& app, const Argument& argument)
      : app_(app), argument_(argument), description_(argument.description) {
    if (isOption(argument) && !argument.choices.empty()) {
      description_ += ": " + joined(argument.choices, ", ");
    }
  }

  CLI::Option* operator()(bool* out) const {
    return app_.add_flag(argument_.name, *out, description_);
  }
  CLI::Option* operator()(int* out) const {
    return app_.add_option(argument_.name, *out, description_)->capture_default_str();
  }
  CLI::Option* operator()(std::optional<int>* out) const {
    return app_.add_option_function<int>(
        argument_.name, [out](const int& number) { *out = number; }, description_);
  }
  CLI::Option* operator()(std::string* out) const {
    CLI::Option* option = app_.add_option_function<std::string>(
        argument_.name,
        [out](const std::string& text) {
          if (!text.empty()) {
            *out = text;
          }
        },
        description_);
    return out->empty() ? option : option->default_str(*out);
  }
  CLI::Option* operator()(std::vector<std::string>* out) const {
    CLI::Option* option = app_.add_option(argument_.name, *out, description_);
    return isOption(argument_) ? option->allow_extra_args(false) : option;
  }

 private:
  CLI::App& app_;
  const Argument& argument_;
  std::string description_;
};

// "" for one of the choices; for anything else a sentence, with the nearest of them.
std::string checkChoice(const std::string& given, const std::vector<std::string>& choices) {
  if (std::find(choices.begin(), choices.end(), given) != choices.end()) {
    return "";
  }
  const std::string nearest = nearestName(given, choices);
  return '"' + given + "\" is none of " + joined(choices, ", ") +
         (nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?");
}

// The choices of an option stand in its description; of others, beside the name.
void limitTo(const std::vector<std::string>& choices, const Argument& argument,
             CLI::Option* option) {
  if (isOption(argument)) {
    option->check([choices](const std::string& given) { return checkChoice(given, choices); });
  } else {
    option->check(CLI::IsMember(choices));
  }
}

void add(CLI::App& app, const Argument& argument) {
  CLI::Option* option = std::visit(Adder(app, argument), argument.into);
  option->required(argument.isRequired);
  if (!argument.choices.empty()) {
    limitTo(argument.choices, argument, option);
  }
  if (!argument.numbers.empty()) {
    option->check(CLI::IsMember(argument.numbers));
  }
  if (argument.numberRange) {
    option->check(CLI::Range(argument.numberRange->first, argument.numberRange->second));
  }
}

// The commands as the library has them; a run leaves in `chosen` which of them it was.
class Parser {
 public:
  Parser(const std::vector<Command>& commands, const std::vector<Argument>& common)
      : commands_(commands), app_(kProgramDescription, kProgramName) {
    const Argument help = helpArgument();
    app_.set_help_flag(help.name, help.description);
    app_.require_subcommand(1);
    app_.set_version_flag("--version", kProgramVersion, "the version of this program");
    app_.footer(std::string(kProgramSteps) + "\n\nexit status: " + kProgramStatuses);
    for (const Command& command : commands) {
      CLI::App* sub = app_.add_subcommand(command.name, command.description);
      const std::string behind = command.behind.name.empty()
                                     ? ""
                                     : "behind --:\n  " + command.behind.name + " ...  " +
                                           command.behind.description + "\n\n";
      sub->footer(behind + "example:\n  " + command.example);
      for (const Argument& argument : common) {
        add(*sub, argument);
      }
      for (const Argument& argument : command.arguments) {
        add(*sub, argument);
      }
      sub->callback([this, &command] { chosen_ = &command; });
    }
  }

  ParsedLine parse(std::vector<std::string> arguments) {
    takeBehind(arguments);
    try {
      app_.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& e) {
      if (e.get_exit_code() != 0) {
        return {nullptr, "", e.what()};
      }
      std::ostringstream text;
      app_.exit(e, text, text);
      return {nullptr, text.str(), ""};
    }
    return {chosen_, "", ""};
  }

  std::string help() const { return app_.help(); }

 private:
  // Takes what is behind "--", for a command that wants it: the library would have it stand for
  // whatever was not given before.
  void takeBehind(std::vector<std::string>& arguments) const {
    const auto command = std::find_if(commands_.begin(), commands_.end(), [&](const Command& each) {
      return !arguments.empty() && each.name == arguments[0] && !each.behind.name.empty();
    });
    const auto dashes = std::find(arguments.begin(), arguments.end(), "--");
    if (command != commands_.end() && dashes != arguments.end()) {
      std::get<std::vector<std::string>*>(command->behind.into)
          ->assign(dashes + 1, arguments.end());
      arguments.erase(dashes, arguments.end());
    }
  }

  const std::vector<Command>& commands_;
  CLI::App app_;
  const Command* chosen_ = nullptr;
};

}  // namespace

ParsedLine parseArguments(const std::vector<Command>& commands, const std::vector<Argument>& common,
                          const std::vector<std::string>& arguments) {
  return Parser(commands, common).parse(arguments);
}

std::string programHelp(const std::vector<Command>& commands, const std::vector<Argument>& common) {
  return Parser(commands, common).help();
}

}  // namespace quillory::pack
