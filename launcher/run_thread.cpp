#include "launcher/run_thread.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "support/log.h"

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

int getPathToExe(char* buf, int size) {
  if (size <= 0) return -1;
  std::memset(buf, 0, static_cast<std::size_t>(size));
  if (readlink("/proc/self/exe", buf, static_cast<std::size_t>(size) - 1) < 0) return -1;
  logMessage("Path to exe is %s\n", buf);
  return 0;
}

}  // namespace quillory
