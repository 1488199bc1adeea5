// What a linked image leaves to be done when its addresses are known: pointers into itself move by
// the slide (rebasing), and pointers to symbols of other libraries are filled in (binding). All of
// them are bound at once, the lazy ones too.
#pragma once
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/macos/loader/image.h"

namespace quillory::loader {

/// The address of a symbol in a library (install name); null when there is none.
using SymbolFinder = std::function<const void*(std::string_view symbol, std::string_view library)>;

/// Adds the slide to every pointer that the image lists. Throws LoadError for an opcode that is
/// unknown, cut off, or leads out of the image.
void rebasePointers(const Image& image);

/// Binds every symbol that the image imports. Throws LoadError as above, and when symbols are
/// missing: its text names every one of them. A symbol that is imported weakly may be missing, and
/// is null then.
void bindSymbols(const Image& image, const SymbolFinder& find);

}  // namespace quillory::loader
