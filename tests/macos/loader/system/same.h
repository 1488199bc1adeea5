// Functions whose names, parameters and results are the same on both systems, and which the image
// may therefore call directly. Error numbers and paths are all they tell of the system; errno is
// translated where the image asks for it.
#pragma once
#include <string_view>

namespace quillory::loader {

/// By the name in C, without the linker's underscore; null for any other function.
const void* sameSymbol(std::string_view name);

}  // namespace quillory::loader
