// What an image may import, by name: each part of the loader has a table of its own.
#pragma once
#include <span>
#include <string_view>

namespace quillory::loader {

/// A symbol as the image spells it, with the underscore that the linker puts before every name.
struct Symbol {
  std::string_view name;
  const void* address;
};

using Symbols = std::span<const Symbol>;

template <class Result, class... Parameters>
const void* code(Result (*function)(Parameters...)) {
  return reinterpret_cast<const void*>(function);
}

template <class Result, class... Parameters>
const void* code(Result (*function)(Parameters..., ...)) {
  return reinterpret_cast<const void*>(function);
}

template <class Result, class... Parameters>
const void* code(Result (*function)(Parameters...) noexcept) {
  return reinterpret_cast<const void*>(function);
}

}  // namespace quillory::loader
