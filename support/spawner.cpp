#include "support/spawner.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/log.h"
#include "support/program.h"

namespace quillory {
namespace {

void logCreation() { logMessage("[Spawner] Creating spawner\n"); }

void logExecutable(const char* path) {
  logMessage("[Spawner] Setting spawner exe to %s\n", path);
  // The child shares standard output: what is buffered here has to come before its first line.
  std::fflush(stdout);
}

void logArgument(const char* text) { logMessage("[Spawner] Appended argument %s\n", text); }

std::vector<std::string> argumentsOf(const Spawner* spawner) {
  const char* const* const end = std::find(spawner->arguments, spawner->arguments + kSpawnerSlots,
                                           static_cast<const char*>(nullptr));
  return {spawner->arguments, end};
}

// A process that has started, or a log line.
ProgramResult start(const std::vector<std::string>& arguments, const char* directory) {
  ProgramOptions options;
  if (directory != nullptr) options.directory = directory;
  options.waits = false;
  const ProgramResult program = runProgram(arguments, options);
  if (!program.started) logMessage("Launch Error %d.\n", program.error);
  return program;
}

int startAndWait(const std::vector<std::string>& arguments, const char* directory) {
  ProgramResult program = start(arguments, directory);
  if (!program.started) return -1;
  logMessage("Spawn call returned %d.\n", 0);

  waitForProgram(program);
  logMessage("Spawn call done %d %d.\n", static_cast<int>(program.process), program.waitStatus);
  if (program.exited) return program.status;
  // Nobody knows how a child ended that cannot be waited for: not a success.
  if (program.signal == 0) return -1;
  // By intent: what a tool left behind tells more than the way in which it was ended.
  logMessage("[Spawner] runSpawnerAndWait returned %d\n", 0);
  return 0;
}

}  // namespace

Spawner* createSpawner() {
  logCreation();
  return std::make_unique<Spawner>().release();
}

void deleteSpawner(Spawner* spawner) { const std::unique_ptr<Spawner> owner(spawner); }

void setSpawnerExe(Spawner* spawner, const char* path) {
  logExecutable(path);
  addSpawnerArg(spawner, path);
}

void addSpawnerArg(Spawner* spawner, const char* text) {
  const char** const end = spawner->arguments + kSpawnerSlots;
  const char** const slot = std::find(spawner->arguments, end, nullptr);
  if (slot == end) {
    logMessage("[Spawner] WARNING: couldn't append argument %s\n", text);
    return;
  }
  *slot = text;
  logArgument(text);
}

Tool::Tool(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {
  logCreation();
  if (!arguments_.empty()) logExecutable(arguments_[0].c_str());
  for (const std::string& argument : arguments_) logArgument(argument.c_str());
}

int Tool::runAndWait() const { return startAndWait(arguments_, nullptr); }

OwnedSpawner spawnerOf(const std::vector<const char*>& arguments) {
  OwnedSpawner spawner(createSpawner());
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (i == 0) {
      setSpawnerExe(spawner.get(), arguments[i]);
    } else {
      addSpawnerArg(spawner.get(), arguments[i]);
    }
  }
  return spawner;
}

int runSpawnerAndWait(const Spawner* spawner) {
  return startAndWait(argumentsOf(spawner), nullptr);
}

int runSpawnerAndWait(const Spawner* spawner, const char* directory) {
  return startAndWait(argumentsOf(spawner), directory);
}

ProgramResult startSpawner(const Spawner* spawner, const char* directory) {
  return start(argumentsOf(spawner), directory);
}

}  // namespace quillory
