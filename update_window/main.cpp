// quillory-update-window: a run of quillory-update, in a window. The main thread is the one of the
// windows, and another one does the work, as in the launcher.
#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "platform/support_cocoa.h"
#include "support/log.h"
#include "support/platform.h"
#include "support/standard_streams.h"
#include "ui/application_shell_cocoa.h"
#include "update_window/options.h"
#include "update_window/session.h"
#include "update_window/text_display.h"
#include "update_window/update_window_cocoa.h"

namespace {

using namespace quillory;
using namespace quillory::window;

// For as long as the process lives, which the thread below ends.
Options options;
std::string program;

std::string programBeside(const std::string& own) {
  const std::size_t slash = own.rfind('/');
  return (slash == std::string::npos ? "." : own.substr(0, slash)) + "/quillory-update";
}

void* work(void*) {
  Session* session = nullptr;
  TextDisplay text(
      [](const std::string& line) { std::fprintf(stderr, "[Update] %s\n", line.c_str()); });
  const OnPress onPress = [&session](Button button) { session->press(button); };
  const bool hasWindows = isWindowServerThere();
  const auto show = [&](const WindowContent& content) {
    if (!hasWindows || !showInWindow(content, onPress)) text.show(content);
  };
  Session made(options, commandFor(options, program), show, hasWindows);
  session = &made;
  const int status = made.run();
  closeWindow();
  std::exit(status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 1) return kExitUsage;
  fillStandardStreams();
  outliveReaders();
  std::string why;
  const std::optional<Options> parsed = parseOptions({argv + 1, argv + argc}, why);
  if (!parsed) {
    std::fputs(why.empty() ? "" : ("quillory-update-window: " + why + "\n\n").c_str(), stderr);
    std::fputs(helpText(), why.empty() ? stdout : stderr);
    return why.empty() ? kExitDone : kExitUsage;
  }
  options = *parsed;
  program = programBeside(argv[0]);
  startCocoa(argv);
  platformCalls.systemLog = logThroughCocoa;
  platformCalls.isMainThread = isMainThreadOfCocoa;
  createApplication();
  pthread_t thread;
  if (pthread_create(&thread, nullptr, work, nullptr) != 0) return kExitFailed;
  runApplication();
  return kExitFailed;
}
