#include "platform/gnustep/request_bus.h"

#include <memory>
#include <string>

#include "platform/gnustep/desktop_bus.h"
#include "platform/gnustep/info_plist.h"
#include "platform/gnustep/main_loop.h"
#include "support/file_urls.h"
#include "support/opened_files.h"

namespace quillory::platform {
namespace {

constexpr int kLongestWaitMillis = 200;

// All of it belongs to the main thread.
std::unique_ptr<DesktopBus> bus;
bool isListening = false;
bool isOpened = false;
void (*urlTaker)(const char* url) = nullptr;

void openRequested(const char* url) {
  // Files come the same way here; on macOS they are a message of their own.
  if (const auto path = pathOfFileUrl(url)) {
    openFile(*path);
  } else {
    urlTaker(url);
  }
}

void process() {
  if (bus == nullptr || bus->process()) return;
  mainLoop().unwatch(bus->descriptor());
  bus.reset();
}

void openBus() {
  if (isOpened) return;
  isOpened = true;
  auto information = textsOfInfoPlist(ownInfoPlist());
  const std::string name =
      busNameOf(information["CFBundleIdentifier"], information["CFBundleName"]);
  if (name.empty()) return;
  bus = DesktopBus::open(name, openRequested);
  if (bus == nullptr) return;
  mainLoop().watch(bus->descriptor(), process);
  process();
}

}  // namespace

void listenToBus(void (*openUrl)(const char* url)) {
  urlTaker = openUrl;
  if (isListening) return;
  isListening = true;
  mainLoop().post(openBus);
}

void handleWaitingCalls() {
  if (!isListening) return;
  openBus();
  if (bus != nullptr) bus->settle(kLongestWaitMillis);
  process();
}

}  // namespace quillory::platform
