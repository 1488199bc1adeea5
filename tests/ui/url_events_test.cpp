// Requests to open a URL, over a session bus of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"
#include "tests/ui/demo_process.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class SessionBus {
 public:
  explicit SessionBus(const std::string& configuration = "--session")
      : daemon_({"dbus-daemon", configuration, "--address=unix:path=" + folder_ / "bus", "--nofork",
                 "--print-address=1"}),
        address_(firstLineOf(daemon_)) {}
  const std::string& address() const { return address_; }

  /// Calls a method of the interface as a desktop does; what gdbus says about it.
  ChildResult call(const std::string& method, const std::vector<std::string>& arguments,
                   const std::string& name = "io.quillory.tests.Demo") const {
    std::string path = "/" + name;
    for (char& c : path) c = c == '.' ? '/' : c == '-' ? '_' : c;
    std::vector<std::string> command = {
        "gdbus",  "call",     "--session",
        "--dest", name,       "--object-path",
        path,     "--method", "org.freedesktop.Application." + method};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildOptions options;
    options.environment["DBUS_SESSION_BUS_ADDRESS"] = address_;
    return runChild(command, options);
  }

  void stop() {
    daemon_.sendSignal(SIGTERM);
    daemon_.finish();
  }

 private:
  TempDir folder_;  // of its socket
  BackgroundChild daemon_;
  std::string address_;
};

std::string urlOf(DemoProcess& demo) { return demo.command("url"); }

TEST(UrlEvents, NoneIsNull) {
  const SessionBus bus;
  DemoProcess demo({.busAddress = bus.address()});
  EXPECT_EQ(urlOf(demo), "url NULL\n");
  EXPECT_THAT(demo.log(), HasSubstr("[Quillory] [URL] Latest request is NULL"));
  EXPECT_THAT(demo.log(), HasSubstr("[Wrapper] Registering shared apple event manager handler"));
}

TEST(UrlEvents, OneIsKept) {
  const SessionBus bus;
  DemoProcess demo({.busAddress = bus.address()});
  urlOf(demo);
  EXPECT_EQ(bus.call("Open", {"['hello://a?b=%20c&d=\xc3\xa4 e']", "{}"}).out, "()\n");
  EXPECT_EQ(urlOf(demo), "url hello://a?b=%20c&d=\xc3\xa4 e\n");
  EXPECT_THAT(demo.log(), HasSubstr("[Quillory] [URL] Request received to open URL "
                                    "hello://a?b=%20c&d=\xc3\xa4 e"));
  EXPECT_THAT(demo.log(),
              HasSubstr("[Quillory] [URL] Converted URL to 'hello://a?b=%20c&d=\xc3\xa4 e'"));
  EXPECT_THAT(demo.log(),
              HasSubstr("[Quillory] [URL] Latest request is 'hello://a?b=%20c&d=\xc3\xa4 e'"));
}

TEST(UrlEvents, TheLastOfSeveralCounts) {
  const SessionBus bus;
  DemoProcess demo({.busAddress = bus.address()});
  urlOf(demo);
  bus.call("Open", {"['first:x']", "{}"});
  bus.call("Open", {"['second:x']", "{}"});
  EXPECT_EQ(urlOf(demo), "url second:x\n");
  bus.call("Open", {"['third:x', 'fourth:x']", "{}"});
  EXPECT_EQ(urlOf(demo), "url fourth:x\n");
}

TEST(UrlEvents, ComeWhileTheSplashIsShownToo) {
  const SessionBus bus;
  DemoProcess demo({.busAddress = bus.address()});
  demo.commands({"init", "show", "progress -1"});
  bus.call("Open", {"['during:x']", "{}"});
  demo.command("cleanup");
  EXPECT_EQ(urlOf(demo), "url during:x\n");
}

TEST(UrlEvents, OtherCallsAreAnsweredAndChangeNothing) {
  const SessionBus bus;
  DemoProcess demo({.busAddress = bus.address()});
  urlOf(demo);
  EXPECT_EQ(bus.call("Activate", {"{}"}).out, "()\n");
  EXPECT_EQ(bus.call("ActivateAction", {"'new'", "[]", "{}"}).out, "()\n");
  EXPECT_EQ(bus.call("Open", {"@as []", "{}"}).out, "()\n");
  EXPECT_NE(bus.call("Open", {"'no list'"}).exitStatus, 0);
  EXPECT_EQ(urlOf(demo), "url NULL\n");
}

TEST(UrlEvents, ALongUrlArrivesWhole) {
  const SessionBus bus;
  DemoProcess demo({.busAddress = bus.address()});
  urlOf(demo);
  const std::string url = "long:" + std::string(60000, 'x');
  bus.call("Open", {"['" + url + "']", "{}"});
  EXPECT_EQ(urlOf(demo), "url " + url + "\n");
}

TEST(UrlEvents, UseTheBundlesNameWithoutAnIdentifier) {
  const SessionBus bus;
  DemoProcess demo({.busAddress = bus.address(), .identifier = "", .bundleName = "My App 2"});
  urlOf(demo);
  EXPECT_EQ(bus.call("Open", {"['named:x']", "{}"}, "io.quillory.My_App_2").out, "()\n");
  EXPECT_EQ(urlOf(demo), "url named:x\n");
}

TEST(UrlEvents, GoToTheProcessThatHasTheName) {
  const SessionBus bus;
  DemoProcess first({.busAddress = bus.address()});
  urlOf(first);
  DemoProcess second({.busAddress = bus.address()});
  urlOf(second);
  bus.call("Open", {"['one:x']", "{}"});
  EXPECT_EQ(urlOf(second), "url NULL\n");
  EXPECT_EQ(urlOf(first), "url one:x\n");
}

// As bus.call("Open") without its introspection, which would start the application before.
void open(const SessionBus& bus, const char* name, const char* path, const std::string& url) {
  sd_bus* connection = nullptr;
  ASSERT_GE(sd_bus_new(&connection), 0);
  ASSERT_GE(sd_bus_set_address(connection, bus.address().c_str()), 0);
  ASSERT_GE(sd_bus_set_bus_client(connection, 1), 0);
  ASSERT_GE(sd_bus_start(connection), 0);
  // The application may end before it has answered.
  sd_bus_call_method(connection, name, path, "org.freedesktop.Application", "Open", nullptr,
                     nullptr, "asa{sv}", 1, url.c_str(), 0);
  sd_bus_flush_close_unref(connection);
}

// The bus starts the application for a URL, and holds that back until somebody owns the name.
TEST(UrlEvents, OneThatStartsTheApplicationIsNotMissed) {
  const TempDir folder;
  const std::string executable = folder / "Demo.app/Contents/MacOS/demo";
  writeFile(folder / "Demo.app/Contents/Info.plist",
            "<plist><dict><key>CFBundleIdentifier</key><string>io.quillory.tests.Started</string>"
            "</dict></plist>");
  writeFile(folder / "start.sh", "echo url | " + executable + " > " + (folder / "out") + " 2>&1\n" +
                                     "touch " + (folder / "ended") + "\n");
  std::filesystem::create_directories(folder / "Demo.app/Contents/MacOS");
  std::filesystem::copy_file(QUILLORY_SPLASH_DEMO, executable);
  writeFile(folder / "services/demo.service",
            "[D-BUS Service]\nName=io.quillory.tests.Started\nExec=/bin/sh " +
                (folder / "start.sh") + "\n");
  writeFile(folder / "bus.conf",
            "<busconfig><type>session</type><listen>unix:tmpdir=" + folder.str() +
                "</listen><servicedir>" + (folder / "services") +
                "</servicedir><policy context=\"default\"><allow send_destination=\"*\" "
                "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
                "<allow own=\"*\"/></policy></busconfig>");
  const SessionBus bus("--config-file=" + (folder / "bus.conf"));
  for (const std::string url : {"first:x", "second:x", "third:x"}) {
    open(bus, "io.quillory.tests.Started", "/io/quillory/tests/Started", url);
    for (int wait = 0; wait < 1000 && !std::filesystem::exists(folder / "ended"); ++wait)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_THAT(readFile(folder / "out"), HasSubstr("url " + url + "\n"));
    std::filesystem::remove(folder / "ended");
  }
}

TEST(UrlEvents, NeedNoBus) {
  for (const char* address : {"", "unix:path=/nonexistent", "nonsense"}) {
    SCOPED_TRACE(address);
    DemoProcess demo({.busAddress = address});
    EXPECT_EQ(urlOf(demo), "url NULL\n");
    EXPECT_EQ(demo.finish().exitStatus, 0);
  }
}

TEST(UrlEvents, OutliveTheBus) {
  SessionBus bus;
  DemoProcess demo({.busAddress = bus.address()});
  urlOf(demo);
  bus.call("Open", {"['before:x']", "{}"});
  bus.stop();
  demo.commands({"wait 100", "init", "show", "cleanup"});
  EXPECT_EQ(urlOf(demo), "url before:x\n");
  EXPECT_EQ(demo.finish().exitStatus, 0);
}

}  // namespace
}  // namespace quillory::testing
