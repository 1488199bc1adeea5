// Prints the manual page of quillory-update. A program of its own, run by the build:
// quillory-update travels in bundles, and needs no page there.
#include <cstdio>

#include "update/command_line.h"

int main() {
  return std::fputs(quillory::update::manual().c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1
                                                                                                : 0;
}
