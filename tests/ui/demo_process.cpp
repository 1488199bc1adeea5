#include "tests/ui/demo_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "tests/harness/programs_of.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

std::string infoPlist(const DemoProcess::Start& start) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>\n"
         "<key>CFBundleIdentifier</key><string>" +
         start.identifier + "</string>\n<key>CFBundleName</key><string>" + start.bundleName +
         "</string>\n</dict></plist>\n";
}

// A process that has ended has no executable any more, even while its status waits to be asked for.
bool isRunning(pid_t process) {
  std::error_code ended;
  return !fs::read_symlink("/proc/" + std::to_string(process) + "/exe", ended).empty();
}

}  // namespace

DemoProcess::DemoProcess(const Start& start) : start_(start) {
  fs::create_directories(home());
  fs::create_directories(temporary());
  const std::string contents = folder_ / "Demo.app/Contents";
  writeFile(contents + "/Info.plist", infoPlist(start));
  fs::create_directories(contents + "/MacOS");
  fs::copy_file(QUILLORY_SPLASH_DEMO, contents + "/MacOS/demo");
  const std::string ids = std::to_string(getuid()) + ":" + std::to_string(getgid());
  writeFile(folder_ / "passwd", "tester:x:" + ids + ":Tester:" + home() + ":/bin/sh\n");
  writeFile(folder_ / "group", "testers:x:" + std::to_string(getgid()) + ":\n");
  EXPECT_EQ(mkfifo((folder_ / "commands").c_str(), 0600), 0);
  begin();
}

DemoProcess::~DemoProcess() { endCommands(); }

void DemoProcess::begin() {
  // For reading too: opening it waits for nobody then, and so does the child.
  commands_ = open((folder_ / "commands").c_str(), O_RDWR | O_CLOEXEC);
  outputSeen_ = 0;
  ChildOptions options;
  options.environment = {{"HOME", home()},
                         {"TMPDIR", temporary()},
                         {"LD_PRELOAD", "libnss_wrapper.so"},
                         {"NSS_WRAPPER_PASSWD", folder_ / "passwd"},
                         {"NSS_WRAPPER_GROUP", folder_ / "group"},
                         {"NSS_WRAPPER_DISABLE_DEEPBIND", "1"},
                         {"ASAN_OPTIONS", "detect_leaks=0:verify_asan_link_order=0"},
                         {"SPLASH_DEMO_COMMANDS", folder_ / "commands"}};
  options.unset = {"DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "XCOMPOSEFILE",
                   "MAGICK_CODER_MODULE_PATH"};
  if (!start_.display.empty()) options.environment["DISPLAY"] = start_.display;
  if (!start_.busAddress.empty())
    options.environment["DBUS_SESSION_BUS_ADDRESS"] = start_.busAddress;
  std::vector<std::string> arguments = {folder_ / "Demo.app/Contents/MacOS/demo"};
  arguments.insert(arguments.end(), start_.arguments.begin(), start_.arguments.end());
  process_ = std::make_unique<BackgroundChild>(arguments, options);
}

void DemoProcess::startCommand(const std::string& text) {
  const std::string line = text + "\n";
  EXPECT_EQ(write(commands_, line.data(), line.size()), static_cast<ssize_t>(line.size()));
}

std::string DemoProcess::command(const std::string& text) {
  startCommand(text);
  const std::string answer = "done " + text.substr(0, text.find(' ')) + "\n";
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  for (bool isAlive = true; isAlive && std::chrono::steady_clock::now() < end;) {
    isAlive = isRunning(process_->pid());
    const std::string all = process_->out();
    const std::size_t found = all.find(answer, outputSeen_);
    if (found != std::string::npos) {
      const std::string output = all.substr(outputSeen_, found - outputSeen_);
      outputSeen_ = found + answer.size();
      return output;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  ADD_FAILURE() << "no answer to: " << text << "\n" << log();
  return {};
}

void DemoProcess::commands(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) command(text);
}

void DemoProcess::endCommands() {
  if (commands_ >= 0) close(commands_);
  commands_ = -1;
}

ChildResult DemoProcess::finish() {
  endCommands();
  return process_->finish();
}

std::vector<std::string> DemoProcess::leftBehind() const {
  std::vector<std::string> left = programsOf(home());
  for (const fs::directory_entry& entry : fs::directory_iterator(home()))
    left.push_back(entry.path());
  return left;
}

void DemoProcess::restart() {
  endCommands();
  process_.reset();
  begin();
}

}  // namespace quillory::testing
