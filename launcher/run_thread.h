// The thread that does the work, while the main thread serves the window and the events.
#pragma once

#include "launcher/prepare_only.h"

namespace quillory {

/// The process's arguments, and what main() returns if its event loop ever ended. Written before
/// the run thread starts; afterwards only the run thread touches them. `argc` is 1 at least.
extern int argc;
extern char** argv;
extern int returnCode;

/// Body of the run thread: a whole start, which ends the process. The argument is ignored.
void* run(void*);

/// What run() calls, one after the other. The driver never returns; the command runner behind it is
/// there for one that does.
struct RunCalls {
  void (*extractWrapperTail)(char* exePath, int argCount, char** args, int fullArgc,
                             char** fullArgv, bool prepareOnly);
  void (*runConfiguredCommand)(int argc, char** argv, int* returnCode);
};
extern RunCalls runCalls;

}  // namespace quillory
