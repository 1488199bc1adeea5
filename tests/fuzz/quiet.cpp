#include "tests/fuzz/quiet.h"

#include <cstdio>

#include "support/log.h"
#include "support/platform.h"

namespace quillory::fuzz {

void silence() {
  platformCalls.systemLog = +[](const char*) {};
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
}

}  // namespace quillory::fuzz
