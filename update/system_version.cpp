#include "update/system_version.h"

#include <charconv>

namespace quillory::update {
namespace {

// Takes the next number off the front; 0 where there is none.
long nextNumber(std::string_view& version) {
  long number = 0;
  const auto parsed = std::from_chars(version.data(), version.data() + version.size(), number);
  version.remove_prefix(static_cast<std::size_t>(parsed.ptr - version.data()));
  if (!version.empty()) version.remove_prefix(1);
  return number;
}

}  // namespace

bool meetsMinimum(std::string_view is, std::string_view asked) {
  if (asked.empty()) return true;
  if (is.empty()) return false;
  while (!is.empty() || !asked.empty()) {
    const long have = nextNumber(is);
    const long want = nextNumber(asked);
    if (have != want) return have > want;
  }
  return true;
}

}  // namespace quillory::update
