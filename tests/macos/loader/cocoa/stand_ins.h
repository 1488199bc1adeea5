// Cocoa for an image: GNUstep, started as a program of this project starts it, with stand-ins for
// what it lacks or does otherwise. docs/porting.md says what that cannot show.
#pragma once
#include <string_view>

#include "tests/macos/loader/symbols.h"

namespace quillory::loader {

/// Foundation, for whatever image. Main thread; `program` is the name that it gets.
void startFoundation(char* program);
/// AppKit, for an image that is linked with it. Throws LoadError where there is none.
void startAppKit();

/// The class that an image gets instead of one of this name; the same name where it is that class.
std::string_view classInstead(std::string_view name);

Symbols frameworkSymbols();  // functions.mm: functions and constants of all frameworks
/// Constants and functions of AppKit, which is loaded only when an image asks for it; null for an
/// unknown name.
const void* appKitSymbol(std::string_view name);

}  // namespace quillory::loader
