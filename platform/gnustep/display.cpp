#include "platform/gnustep/display.h"

#include <dlfcn.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace quillory::platform {
namespace {

struct LibraryCloser {
  void operator()(void* library) const { dlclose(library); }
};

template <typename Function>
Function* find(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

// Whether the server answers, however long that takes.
bool canConnect() {
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

}  // namespace

bool isDisplayNamed() {
  const char* name = std::getenv("DISPLAY");
  return name != nullptr && *name != '\0';
}

bool isDisplayReachable() {
  if (!isDisplayNamed()) return false;
  constexpr std::chrono::seconds kPatience{3};
  std::promise<bool> answer;
  std::future<bool> isReachable = answer.get_future();
  try {
    // On a thread that may be left waiting, as a network that swallows everything can take minutes.
    std::thread([answer = std::move(answer)]() mutable {
      answer.set_value(canConnect());
    }).detach();
  } catch (const std::system_error&) {
    return false;
  }
  return isReachable.wait_for(kPatience) == std::future_status::ready && isReachable.get();
}

}  // namespace quillory::platform
