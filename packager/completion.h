// Scripts that let a shell complete the command line.
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace quillory::pack {

struct CommandNames {
  std::string name;
  std::string description;
  std::vector<std::string> options;
};

/// `shell` is "bash", "zsh" or "fish".
std::string completionScript(const std::string& shell, const std::vector<CommandNames>& commands);

}  // namespace quillory::pack
