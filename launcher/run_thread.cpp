#include "launcher/run_thread.h"

#include <cstdio>

namespace quillory {

int argc = 0;
char** argv = nullptr;
int returnCode = 0;

void runSteps(const RunSteps& steps) {
  const bool prepareOnly = isPrepareOnly(argc, argv);
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
