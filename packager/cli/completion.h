// Scripts that let a shell complete the command line.
#pragma once
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quillory::pack {

struct CommandNames {
  std::string name;
  std::string description;
  std::vector<std::string> options;
  std::map<std::string, std::vector<std::string>> values;  ///< of "--option", where all are known
};

/// `shell` is "bash", "zsh" or "fish".
std::string completionScript(const std::string& shell, const std::vector<CommandNames>& commands);

}  // namespace quillory::pack
