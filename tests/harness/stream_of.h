// A readable stdio stream over bytes in memory.
#pragma once
#include <cstdio>
#include <string>
#include <string_view>

#include "support/owned.h"

namespace quillory::testing {

class StreamOf {
 public:
  explicit StreamOf(std::string_view bytes) : file_(std::tmpfile()) {
    std::fwrite(bytes.data(), 1, bytes.size(), file_.get());
    std::rewind(file_.get());
  }
  std::FILE* get() const { return file_.get(); }

 private:
  OwnedFile file_;
};

}  // namespace quillory::testing
