// The thread that does the work, while the main thread serves the window and the events.
#pragma once

#include "launcher/driver.h"
#include "launcher/prepare_only.h"
#include "runner/command_runner.h"

namespace quillory {

/// The process's arguments, and what main() returns if its event loop ever ended. Written before
/// the run thread starts; afterwards only the run thread touches them. `argc` is 1 at least.
extern int argc;
extern char** argv;
extern int returnCode;

/// What a run consists of, one after the other. The driver never returns; the command runner behind
/// it is there for one that does.
struct RunSteps {
  void (*drive)(char* exePath, int argCount, char** args, int fullArgc, char** fullArgv,
                bool prepareOnly) = extractWrapperTail;
  void (*runCommand)(int argc, char** argv, int* returnCode) = runConfiguredCommand;
};

/// A whole start, which ends the process.
void runSteps(const RunSteps& steps = {});

/// Body of the run thread: runSteps(). The argument is ignored.
void* run(void*);

}  // namespace quillory
