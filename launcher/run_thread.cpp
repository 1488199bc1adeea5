#include "launcher/run_thread.h"

#include <cstdio>
#include <cstring>

namespace quillory {

int argc = 0;
char** argv = nullptr;
int returnCode = 0;

void runSteps(const RunSteps& steps) {
  // Without arguments this compares the program's own name, which is as good as any other.
  const bool prepareOnly = std::strcmp(argv[argc - 1], kPrepareOnlyArgument) == 0;
  std::puts("Extracting wrapper tail...");
  std::fflush(stdout);
  steps.drive(argv[0], argc - 1, argv + 1, argc, argv, prepareOnly);
  steps.runCommand(argc, argv, &returnCode);
}

void* run(void*) {
  runSteps();
  return nullptr;
}

}  // namespace quillory
