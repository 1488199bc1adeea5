// Functions of a library that is loaded when it is needed, by their names.
#pragma once
#include <dlfcn.h>

namespace quillory::platform {

/// Whether `library` has the function, which is then in `function`; else that is null.
template <typename Function>
bool findFunction(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(dlsym(library, name));
  return function != nullptr;
}

}  // namespace quillory::platform
