#include "java/launch_command.h"

#include <utility>

#include "support/paths.h"

namespace quillory {

void addMemoryOptions(int memory, int stack, LaunchCommand& command) {
  if (memory >= 1) command.jvmOptions.push_back("-Xmx" + std::to_string(memory) + "m");
  if (stack >= 1) command.jvmOptions.push_back("-Xms" + std::to_string(stack) + "m");
  command.memoryOptionCount = command.jvmOptions.size();
}

void setClassPath(const std::string& appFolder, const std::vector<std::string>& entries,
                  LaunchCommand& command) {
  for (const std::string& entry : entries) {
    std::string path = joinPath(appFolder, entry);
    toNativePath(path.data());
    if (!command.classPath.empty()) command.classPathText += ':';
    command.classPathText += path;
    command.classPath.push_back(std::move(path));
  }
}

std::vector<std::string> processArguments(const LaunchCommand& command) {
  const auto options = command.jvmOptions.begin();
  const auto remembered = options + static_cast<std::ptrdiff_t>(command.memoryOptionCount);
  std::vector<std::string> arguments = {command.executable};
  arguments.insert(arguments.end(), options, remembered);
  arguments.push_back("-cp");
  arguments.push_back(command.classPathText);
  arguments.insert(arguments.end(), remembered, command.jvmOptions.end());
  if (!command.classToRun) return arguments;
  arguments.push_back(*command.classToRun);
  arguments.insert(arguments.end(), command.applicationArguments.begin(),
                   command.applicationArguments.end());
  return arguments;
}

}  // namespace quillory
