#include "launcher/run_thread.h"

#include <cstdio>
#include <cstring>

#include "launcher/driver.h"
#include "runner/command_runner.h"

namespace quillory {

int argc = 0;
char** argv = nullptr;
int returnCode = 0;

RunCalls runCalls = {.extractWrapperTail = extractWrapperTail,
                     .runConfiguredCommand = runConfiguredCommand};

void* run(void*) {
  // Without arguments this compares the program's own name, which is as good as any other.
  const bool prepareOnly = std::strcmp(argv[argc - 1], kPrepareOnlyArgument) == 0;
  std::puts("Extracting wrapper tail...");
  std::fflush(stdout);
  runCalls.extractWrapperTail(argv[0], argc - 1, argv + 1, argc, argv, prepareOnly);
  runCalls.runConfiguredCommand(argc, argv, &returnCode);
  return nullptr;
}

}  // namespace quillory
