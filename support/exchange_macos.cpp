#include <stdio.h>

#include <cerrno>

#include "support/exchange.h"

namespace quillory {
namespace {

int exchangePaths(const char* a, const char* b) {
  return renamex_np(a, b, RENAME_SWAP) == 0 ? 0 : errno;
}

}  // namespace

ExchangeCalls exchangeCalls{exchangePaths};

}  // namespace quillory
