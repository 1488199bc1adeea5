// What keeps an image from being run. The text says which image part, symbol or opcode it was.
#pragma once
#include <stdexcept>

namespace quillory::loader {

struct LoadError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace quillory::loader
