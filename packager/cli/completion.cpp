#include "packager/cli/completion.h"

#include "packager/report/joined.h"

namespace quillory::pack {
namespace {

std::string namesOf(const std::vector<CommandNames>& commands) {
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
      namesOf(commands) +
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
         "compdef _quillory_pack quillory-pack\n";
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

std::string completionScript(const std::string& shell, const std::vector<CommandNames>& commands) {
  return shell == "bash"  ? bashScript(commands)
         : shell == "zsh" ? zshScript(commands)
                          : fishScript(commands);
}

}  // namespace quillory::pack
