// Everything that an image can import.
#pragma once
#include <string_view>

namespace quillory::loader {

/// The address of a symbol, by the name that the image has for it and the install name of its
/// library; null when the loader lacks it. Classes are there once their library is loaded.
const void* findImport(std::string_view symbol, std::string_view library);

}  // namespace quillory::loader
