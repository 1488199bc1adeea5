#include "platform/gnustep/bus_library.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "platform/loaded_function.h"

// Every table of methods refers to it, so that a library which is too old shows when the program is
// started. Nothing reads it.
extern "C" {
extern const unsigned sd_bus_object_vtable_format = 242;
}

namespace quillory::platform {
namespace {

bool isSet(const char* value) { return value != nullptr && *value != '\0'; }

// Where the library looks, and nowhere else.
bool isBusNamed() {
  if (isSet(std::getenv("DBUS_SESSION_BUS_ADDRESS"))) return true;
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  return isSet(folder) && access((std::string(folder) + "/bus").c_str(), F_OK) == 0;
}

// For good.
std::optional<BusLibrary> load() {
  void* const library = dlopen("libsystemd.so.0", RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) return std::nullopt;
  BusLibrary bus = {};
  const bool isComplete =
      findFunction(library, "sd_bus_open_user", bus.openUser) &&
      findFunction(library, "sd_bus_add_object_vtable", bus.addObjectVtable) &&
      findFunction(library, "sd_bus_request_name_async", bus.requestNameAsync) &&
      findFunction(library, "sd_bus_get_fd", bus.getFd) &&
      findFunction(library, "sd_bus_process", bus.process) &&
      findFunction(library, "sd_bus_wait", bus.wait) &&
      findFunction(library, "sd_bus_message_enter_container", bus.enterContainer) &&
      findFunction(library, "sd_bus_message_read_basic", bus.readBasic) &&
      findFunction(library, "sd_bus_reply_method_return", bus.replyMethodReturn) &&
      findFunction(library, "sd_bus_close_unref", bus.closeUnref);
  if (!isComplete) return std::nullopt;
  return bus;
}

}  // namespace

const BusLibrary* busLibrary() {
  if (!isBusNamed()) return nullptr;
  static const std::optional<BusLibrary> library = load();
  return library ? &*library : nullptr;
}

}  // namespace quillory::platform
