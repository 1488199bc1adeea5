#include "platform/gnustep/desktop_bus.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

namespace quillory::platform {
namespace {

constexpr std::size_t kMaxNameLength = 255;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isNameCharacter(char c) {
  return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '-';
}

std::string sanitised(std::string_view bundleName) {
  std::string element;
  if (isDigit(bundleName.front())) element.push_back('_');
  for (const char c : bundleName) element.push_back(isNameCharacter(c) && c != '-' ? c : '_');
  return element;
}

// Two elements or more, each of name characters and not empty, none beginning with a digit.
bool isBusName(std::string_view name) {
  if (name.size() > kMaxNameLength || name.find('.') == std::string_view::npos) return false;
  bool isElementStart = true;
  for (const char c : name) {
    if (c == '.' ? isElementStart : !isNameCharacter(c) || (isElementStart && isDigit(c)))
      return false;
    isElementStart = c == '.';
  }
  return !isElementStart;
}

}  // namespace

std::string busNameOf(std::string_view identifier, std::string_view bundleName) {
  if (isBusName(identifier)) return std::string(identifier);
  if (bundleName.empty()) return {};
  return ("io.quillory." + sanitised(bundleName)).substr(0, kMaxNameLength);
}

std::string objectPathOf(std::string_view busName) {
  std::string path = "/" + std::string(busName);
  std::replace(path.begin(), path.end(), '.', '/');
  std::replace(path.begin(), path.end(), '-', '_');
  return path;
}

const sd_bus_vtable DesktopBus::kApplicationInterface[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Open", "asa{sv}", "", DesktopBus::onOpen, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Activate", "a{sv}", "", DesktopBus::onActivate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ActivateAction", "sava{sv}", "", DesktopBus::onActivate,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

DesktopBus::DesktopBus(const BusLibrary& library, sd_bus* bus, UrlHandler openUrl)
    : library_(library), bus_(bus, library.closeUnref), openUrl_(std::move(openUrl)) {}

std::unique_ptr<DesktopBus> DesktopBus::open(const std::string& name, UrlHandler openUrl) {
  const BusLibrary* const library = busLibrary();
  sd_bus* connection = nullptr;
  if (library == nullptr || library->openUser(&connection) < 0) return nullptr;
  std::unique_ptr<DesktopBus> bus(new DesktopBus(*library, connection, std::move(openUrl)));
  return bus->ask(name) ? std::move(bus) : nullptr;
}

bool DesktopBus::ask(const std::string& name) {
  const std::string path = objectPathOf(name);
  return library_.addObjectVtable(bus_.get(), nullptr, path.c_str(), "org.freedesktop.Application",
                                  kApplicationInterface, this) >= 0 &&
         library_.requestNameAsync(bus_.get(), nullptr, name.c_str(), 0, onNameAnswer, this) >= 0;
}

int DesktopBus::descriptor() const { return library_.getFd(bus_.get()); }

bool DesktopBus::process() {
  int handled = 0;
  do handled = library_.process(bus_.get(), nullptr);
  while (handled > 0);
  return handled == 0;
}

void DesktopBus::settle(int limitMillis) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(limitMillis);
  while (process() && !isNameAnswered_) {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now());
    if (left.count() <= 0) return;
    library_.wait(bus_.get(), static_cast<std::uint64_t>(left.count()));
  }
}

int DesktopBus::onOpen(sd_bus_message* call, void* self, sd_bus_error*) {
  const auto& bus = *static_cast<DesktopBus*>(self);
  int result = bus.library_.enterContainer(call, SD_BUS_TYPE_ARRAY, "s");
  const char* url = nullptr;
  while (result >= 0 && (result = bus.library_.readBasic(call, 's', &url)) > 0) bus.openUrl_(url);
  return result < 0 ? result : bus.library_.replyMethodReturn(call, "");
}

// The desktop asks a running application to come forward. Nothing has to be done for that: a
// launcher that runs is on its way to start the application.
int DesktopBus::onActivate(sd_bus_message* call, void* self, sd_bus_error*) {
  return static_cast<DesktopBus*>(self)->library_.replyMethodReturn(call, "");
}

// A name that another process owns is its to keep; calls never come here then.
int DesktopBus::onNameAnswer(sd_bus_message*, void* self, sd_bus_error*) {
  static_cast<DesktopBus*>(self)->isNameAnswered_ = true;
  return 0;
}

}  // namespace quillory::platform
