#include "packager/cli/completion.h"

#include <algorithm>
#include <map>
#include <memory>

#include "packager/cli/program.h"
#include "packager/report/exit_statuses.h"
#include "packager/report/joined.h"

namespace quillory::pack {
namespace {

// What a shell has to know of a command.
struct CommandNames {
  std::string name;
  std::string description;
  std::vector<std::string> options;
  std::map<std::string, std::vector<std::string>> values;  ///< of "--option", where all are known
};

// The long names before the short ones.
void addOption(const Argument& option, CommandNames& names) {
  std::vector<std::string> own = namesOf(option);
  std::stable_partition(own.begin(), own.end(),
                        [](const std::string& name) { return name.starts_with("--"); });
  names.options.insert(names.options.end(), own.begin(), own.end());
  if (!option.choices.empty()) {
    names.values[own.front()] = option.choices;
  }
}

CommandNames namesOf(const Command& command, const std::vector<Argument>& common) {
  CommandNames names{command.name, command.description, {}, {}};
  addOption(helpArgument(), names);
  for (const auto* arguments : {&common, &command.arguments}) {
    for (const Argument& argument : *arguments) {
      if (isOption(argument)) {
        addOption(argument, names);
      }
    }
  }
  return names;
}

std::string allNames(const std::vector<CommandNames>& commands) {
  std::vector<std::string> names;
  for (const CommandNames& command : commands) {
    names.push_back(command.name);
  }
  return joined(names, " ");
}

struct OptionValues {
  std::string command;
  std::string option;
  std::string values;
};

std::vector<OptionValues> valuesOf(const std::vector<CommandNames>& commands) {
  std::vector<OptionValues> all;
  for (const CommandNames& command : commands) {
    for (const auto& [option, values] : command.values) {
      all.push_back({command.name, option, joined(values, " ")});
    }
  }
  return all;
}

std::string bashScript(const std::vector<CommandNames>& commands) {
  std::string script =
      "# bash completion for quillory-pack; load it with: source <(quillory-pack completion bash)\n"
      "_quillory_pack() {\n"
      "  local word=${COMP_WORDS[COMP_CWORD]} options\n"
      "  if [ \"$COMP_CWORD\" = 1 ]; then\n"
      "    COMPREPLY=($(compgen -W '" +
      allNames(commands) +
      " --help --version' -- \"$word\"))\n"
      "    return\n"
      "  fi\n"
      "  case ${COMP_WORDS[1]} in\n";
  for (const CommandNames& command : commands) {
    script += "    " + command.name + ") options='" + joined(command.options, " ") + "' ;;\n";
  }
  script +=
      "    *) options= ;;\n"
      "  esac\n"
      "  case ${COMP_WORDS[1]}${COMP_WORDS[COMP_CWORD-1]} in\n";
  for (const auto& [command, option, values] : valuesOf(commands)) {
    script += "    " + command + option + ") COMPREPLY=($(compgen -W '" + values +
              "' -- \"$word\")); return ;;\n";
  }
  return script +
         "  esac\n"
         "  case $word in\n"
         "    -*) COMPREPLY=($(compgen -W \"$options\" -- \"$word\")) ;;\n"
         "    *) COMPREPLY=($(compgen -f -- \"$word\")) ;;\n"
         "  esac\n"
         "}\n"
         "complete -o filenames -F _quillory_pack quillory-pack\n";
}

std::string zshScript(const std::vector<CommandNames>& commands) {
  std::string script =
      "#compdef quillory-pack\n"
      "# zsh completion for quillory-pack; put it into a folder of $fpath as _quillory-pack\n"
      "_quillory_pack() {\n"
      "  if (( CURRENT == 2 )); then\n"
      "    local -a commands=(\n";
  for (const CommandNames& command : commands) {
    script += "      '" + command.name + ':' + command.description + "'\n";
  }
  script +=
      "    )\n"
      "    _describe command commands\n"
      "    return\n"
      "  fi\n"
      "  case $words[2]$words[CURRENT-1] in\n";
  for (const auto& [command, option, values] : valuesOf(commands)) {
    script += "    " + command + option + ") compadd -- " + values + "; return ;;\n";
  }
  script +=
      "  esac\n"
      "  case $words[2] in\n";
  for (const CommandNames& command : commands) {
    script +=
        "    " + command.name + ") compadd -- " + joined(command.options, " ") + "; _files ;;\n";
  }
  return script +
         "  esac\n"
         "}\n"
         "# As a file of $fpath this is run in place of the function when it is first asked.\n"
         "if [[ $funcstack[1] = _quillory-pack ]]; then\n"
         "  _quillory_pack\n"
         "else\n"
         "  compdef _quillory_pack quillory-pack\n"
         "fi\n";
}

std::string fishScript(const std::vector<CommandNames>& commands) {
  std::string script =
      "# fish completion for quillory-pack; put it into ~/.config/fish/completions\n";
  for (const CommandNames& command : commands) {
    script += "complete -c quillory-pack -f -n __fish_use_subcommand -a " + command.name + " -d '" +
              command.description + "'\n";
    for (const std::string& option : command.options) {
      const bool isLong = option.starts_with("--");
      script += "complete -c quillory-pack -n '__fish_seen_subcommand_from " + command.name + "' " +
                (isLong ? "-l " + option.substr(2) : "-s " + option.substr(1));
      const auto values = command.values.find(option);
      script +=
          values == command.values.end() ? "\n" : " -x -a '" + joined(values->second, " ") + "'\n";
    }
  }
  return script;
}

}  // namespace

std::string completionScript(const std::string& shell, const std::vector<Command>& commands,
                             const std::vector<Argument>& common) {
  std::vector<CommandNames> names;
  for (const Command& command : commands) {
    names.push_back(namesOf(command, common));
  }
  return shell == "bash"  ? bashScript(names)
         : shell == "zsh" ? zshScript(names)
                          : fishScript(names);
}

Command completionCommand() {
  const auto shell = std::make_shared<std::string>();
  return {"completion",
          "prints a completion script for a shell",
          "source <(quillory-pack completion bash)",
          {{.name = "SHELL",
            .description = "bash, zsh or fish",
            .into = shell.get(),
            .isRequired = true,
            .choices = {"bash", "zsh", "fish"}}},
          [shell](Reporter& reporter) {
            TalkOptions talk;
            reporter.result(completionScript(*shell, allCommands(), talkArguments(talk)));
            return kDone;
          }};
}

}  // namespace quillory::pack
