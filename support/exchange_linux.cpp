#include <fcntl.h>
#include <stdio.h>

#include <cerrno>

#include "support/exchange.h"

namespace quillory {
namespace {

int exchangePaths(const char* a, const char* b) {
  return renameat2(AT_FDCWD, a, AT_FDCWD, b, RENAME_EXCHANGE) == 0 ? 0 : errno;
}

}  // namespace

ExchangeCalls exchangeCalls{exchangePaths};

}  // namespace quillory
