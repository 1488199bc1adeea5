// The Objective-C of an image, whose compiler knows Apple's runtime, made known to the runtime of
// this machine, which is GCC's: its classes, categories, selectors, constant strings, and the
// functions that its code calls.
#pragma once
#include <string_view>

#include "tests/macos/loader/image.h"
#include "tests/macos/loader/symbols.h"

namespace quillory::loader {

Symbols messageSymbols();  // messages.cpp: the objc_msgSend family
Symbols runtimeSymbols();  // runtime.mm: objc_alloc, objc_retain, objc_begin_catch, ...

/// What a class symbol (_OBJC_CLASS_$_NSView) is bound to: the class, which is loaded here. Null
/// when the name is that of no class, or this machine has none of that name.
const void* classSymbol(std::string_view symbol);

/// What the first member of a constant string is bound to.
const void* constantStringClass();

/// Puts selectors, constant strings and classes of the image in their place, in this order; to be
/// called after binding and before any of its code runs. Throws LoadError for what is not
/// understood.
void adoptObjectiveC(const Image& image);

}  // namespace quillory::loader
