// Record streams written by hand: records({"a", "", "x"}) is the bytes a 00 00 x 00.
#pragma once
#include <initializer_list>
#include <string>
#include <string_view>

namespace quillory::testing {

inline std::string records(std::initializer_list<std::string_view> values) {
  std::string bytes;
  for (const std::string_view value : values) {
    bytes.append(value);
    bytes.push_back('\0');
  }
  return bytes;
}

}  // namespace quillory::testing
