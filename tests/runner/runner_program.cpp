// The command runner as a program of its own, started by command_runner_test.cpp.
#include <cstdio>

#include "runner/command_runner.h"

int main(int argc, char** argv) {
  int returnCode = 0;
  quillory::runConfiguredCommand(argc, argv, &returnCode);
  std::printf("came back with %d\n", returnCode);
  return 77;
}
