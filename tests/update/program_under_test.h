// quillory-update as it was built, or the one that the environment names.
#pragma once
#include <cstdlib>
#include <string>

namespace quillory::testing {

inline std::string updateUnderTest() {
  const char* const given = std::getenv("QUILLORY_UPDATE");
  return given == nullptr ? QUILLORY_UPDATE : given;
}

}  // namespace quillory::testing
