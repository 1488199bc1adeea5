// The desktop's way of asking an application to open URLs: it owns a name on the session bus and
// answers the calls of the interface org.freedesktop.Application. Without a session bus, or when
// another process owns the name, nothing ever comes, which is no error.
//
// Nothing here waits for the bus but settle(). One thread at a time.
#pragma once
#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/gnustep/bus_library.h"

namespace quillory::platform {

/// The name that a bundle owns: its identifier where that is a valid name; else "io.quillory."
/// and the bundle's name, with '_' for every byte that a name cannot hold. "" without either.
std::string busNameOf(std::string_view identifier, std::string_view bundleName);

/// Where the object of a name is: "/io/quillory/Hello" for "io.quillory.Hello".
std::string objectPathOf(std::string_view busName);

class DesktopBus {
 public:
  using UrlHandler = std::function<void(const char* url)>;

  /// Null when there is no session bus. The name is asked for; process() sees to the rest.
  static std::unique_ptr<DesktopBus> open(const std::string& name, UrlHandler openUrl);

  /// Readable when process() has something to do.
  int descriptor() const;

  /// Handles all calls that have come in; false when the bus is gone for good.
  bool process();

  /// Waits until the bus has answered whether the name is ours, at most `limitMillis`, and handles
  /// the calls that came with the answer.
  void settle(int limitMillis);

 private:
  DesktopBus(const BusLibrary& library, sd_bus* bus, UrlHandler openUrl);
  bool ask(const std::string& name);

  static int onOpen(sd_bus_message* call, void* self, sd_bus_error* error);
  static int onActivate(sd_bus_message* call, void* self, sd_bus_error* error);
  static int onNameAnswer(sd_bus_message* answer, void* self, sd_bus_error* error);
  static const sd_bus_vtable kApplicationInterface[];

  const BusLibrary& library_;
  std::unique_ptr<sd_bus, decltype(&sd_bus_close_unref)> bus_;
  UrlHandler openUrl_;
  bool isNameAnswered_ = false;
};

}  // namespace quillory::platform
