#include "platform/gnustep/display.h"

#include <dlfcn.h>

#include <cstdlib>
#include <memory>

namespace quillory::platform {
namespace {

struct LibraryCloser {
  void operator()(void* library) const { dlclose(library); }
};

template <typename Function>
Function* find(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

}  // namespace

bool isDisplayNamed() {
  const char* name = std::getenv("DISPLAY");
  return name != nullptr && *name != '\0';
}

bool isDisplayReachable() {
  if (!isDisplayNamed()) return false;
  // Loaded here, since a start that shows no window has no use for it.
  const std::unique_ptr<void, LibraryCloser> x11(dlopen("libX11.so.6", RTLD_LAZY | RTLD_LOCAL));
  if (x11 == nullptr) return false;
  auto* const open = find<void*(const char*)>(x11.get(), "XOpenDisplay");
  auto* const close = find<int(void*)>(x11.get(), "XCloseDisplay");
  if (open == nullptr || close == nullptr) return false;
  void* const display = open(nullptr);
  if (display == nullptr) return false;
  close(display);
  return true;
}

}  // namespace quillory::platform
