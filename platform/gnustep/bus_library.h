// libsystemd's part for D-Bus, loaded where there is a bus: being linked to it would cost every
// start half a millisecond, and seven libraries.
#pragma once
#include <systemd/sd-bus.h>

namespace quillory::platform {

struct BusLibrary {
  decltype(&sd_bus_open_user) openUser;
  decltype(&sd_bus_add_object_vtable) addObjectVtable;
  decltype(&sd_bus_request_name_async) requestNameAsync;
  decltype(&sd_bus_get_fd) getFd;
  decltype(&sd_bus_process) process;
  decltype(&sd_bus_wait) wait;
  decltype(&sd_bus_message_enter_container) enterContainer;
  decltype(&sd_bus_message_read_basic) readBasic;
  decltype(&sd_bus_reply_method_return) replyMethodReturn;
  decltype(&sd_bus_close_unref) closeUnref;
};

/// Null where this session has no bus by the looks of it, or this system no such library. Any
/// thread.
const BusLibrary* busLibrary();

}  // namespace quillory::platform
