#include "runner/command_runner.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "runner/argument_expansion.h"
#include "runner/argument_list.h"
#include "runner/config_entry.h"
#include "runner/debug_lines.h"
#include "support/exit_status.h"
#include "support/new_file.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

[[noreturn]] void endWith(int status) {
  std::fflush(stdout);
  std::exit(status);
}

// The script to write, or null in run mode.
const char* readSwitches(int argc, char** argv) {
  if (argc < 2) return nullptr;
  if (std::strcmp(argv[1], "-DEBUG") == 0) DEBUG = 1;
  if (std::strcmp(argv[1], "-GENERATESCRIPT") != 0) return nullptr;
  if (argc < 3) {
    std::puts("You must specify a script name");
    endWith(kExitFailure);
  }
  std::puts("Generating Bash script");
  return argv[2];
}

// The command as configured: without the arguments of this process. False, with a message, when
// there is none.
bool readCommand(std::FILE* config, const char* name, ArgumentList& list) {
  const int found = readEntry(config, name, list);
  if (found == kEntryMissing) std::puts("could not find config entry");
  if (found != kEntryFound || replaceImportStrings(list) != kEntryFound) return false;
  replaceEnvStrings(list);
  return true;
}

// The first line is no interpreter line ("#!"), by intent: it is a comment, and whatever shell is
// told to read the script, or is the default for one, runs it.
bool writeScript(const char* path, const char* name, ArgumentList& list) {
  NewFile file(path, NewFile::Existing::kFollowed);
  if (!file.isOpen()) return false;
  std::fprintf(file.stream(), "#/bin/sh\n# %s\n", name);
  for (int i = 0; i < list.count; ++i) std::fprintf(file.stream(), "%s ", list[i]);
  std::fputs(" &\n", file.stream());
  return file.close();
}

int generateScript(const char* path, const char* name, ArgumentList& list) {
  if (writeScript(path, name, list)) return kExitSuccess;
  // Whoever runs the script next would run the old one, or a part of it.
  std::printf("could not write script: %s\n", path);
  return kExitFailure;
}

void printCommand(const std::vector<char*>& command) {
  if (DEBUG == 0) return;
  for (const char* argument : command) std::printf("CMD:[%s]\n", argument);
  std::puts("done printing commands");
}

int becomeCommand(ArgumentList& list, int argc, char** argv) {
  std::vector<char*> command(list.slots.begin(), list.slots.begin() + list.count);
  command.insert(command.end(), argv + 1, argv + argc);
  printCommand(command);

  const std::string program(command[0]);
  std::string quoted = '"' + program + '"';
  if (program.find(' ') != std::string::npos) {
    printDebug("wrapping %s\n", program.c_str());
    command[0] = quoted.data();  // what the program is told as its name, not what is searched for
    printDebug("wrapped %s\n", command[0]);
  }
  command.push_back(nullptr);

  std::fflush(stdout);
  const int result = execvp(program.c_str(), command.data());
  std::puts(result == 0 ? "run command ok" : "command run failed");
  return kExitSuccess;
}

// The status with which to end, or nothing when there is no command.
std::optional<int> runOrWriteCommand(const char* script, int argc, char** argv) {
  OwnedFile config(std::fopen(kConfigFile, "rb"));
  if (config == nullptr) {
    std::printf("could not find config file: %s\n", kConfigFile);
    return std::nullopt;
  }
  chopPath(argv[0]);
  chopExe(argv[0]);
  printDebug("name: %s\n", argv[0]);
  ArgumentList list = commandList();
  if (!readCommand(config.get(), argv[0], list)) return std::nullopt;
  config.reset();  // the command does not get it
  return script != nullptr ? generateScript(script, argv[0], list)
                           : becomeCommand(list, argc, argv);
}

}  // namespace

void runConfiguredCommand(int argc, char** argv, int* returnCode) {
  const char* script = readSwitches(argc, argv);
  const std::optional<int> status = runOrWriteCommand(script, argc, argv);
  if (status) endWith(*status);
  *returnCode = -1;
}

}  // namespace quillory
