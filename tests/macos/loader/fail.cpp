#include "tests/macos/loader/fail.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace quillory::loader {

void fail(const char* what) { fail(what, ""); }

void fail(const char* what, long number) { fail(what, std::to_string(number).c_str()); }

void fail(const char* what, const char* name) {
  std::fprintf(stderr, "macho_loader: %s %s\n", what, name);
  _exit(kLoaderFailed);
}

}  // namespace quillory::loader
