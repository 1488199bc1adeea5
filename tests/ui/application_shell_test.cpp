// The application around the splash: what it needs, what it leaves alone, and how it ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/harness/temp_dir.h"
#include "tests/harness/text_count.h"
#include "tests/ui/demo_process.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

const std::vector<std::string> kWholeSplash = {
    "init",          "configure " QUILLORY_SOURCE_DIR "/examples/hello/nativesplash.png",
    "show",          "progress -1",
    "wait 100",      "progress 40",
    "progress -100", "hide",
    "cleanup"};

std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    files.push_back(entry.path().string());
  return files;
}

TEST(WithoutADisplay, EverythingButTheWindowWorks) {
  DemoProcess demo({});
  demo.commands(kWholeSplash);
  const ChildResult result = demo.finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.out, HasSubstr("[Splash] Resizing to 480 288\n"));
  EXPECT_THAT(result.err, HasSubstr("Image Size: 480 : 270"));
  EXPECT_EQ(countOf(result.err, "There is no display: the splash is not shown."), 1);
  EXPECT_THAT(result.err, HasSubstr("Synced call to splash.cleanup"));
}

TEST(WithoutADisplay, AServerThatIsNotThereIsNone) {
  for (const std::string display : {":4711", "unix:4711", "nonsense", "127.0.0.1:4711"}) {
    SCOPED_TRACE(display);
    DemoProcess demo({.display = display});
    demo.commands(kWholeSplash);
    const ChildResult result = demo.finish();
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(countOf(result.err, "There is no display: the splash is not shown."), 1);
  }
}

// The kernel takes the connection, and nobody ever answers.
TEST(WithoutADisplay, AServerThatIsStuckIsNone) {
  const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  int port = 6000 + 900;
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  do address.sin_port = htons(static_cast<std::uint16_t>(++port));
  while (bind(server, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0);
  ASSERT_EQ(listen(server, 5), 0);
  DemoProcess demo({.display = "127.0.0.1:" + std::to_string(port - 6000)});
  demo.commands(kWholeSplash);
  const ChildResult result = demo.finish();
  close(server);
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(countOf(result.err, "There is no display: the splash is not shown."), 1);
}

TEST(WithoutADisplay, NothingIsSaidWhenNoWindowIsWanted) {
  const XServer server;
  DemoProcess demo({.display = server.display()});
  demo.commands({"init", "cleanup"});
  EXPECT_THAT(demo.log(), Not(HasSubstr("display")));
}

class Shell : public ::testing::Test {
 protected:
  XServer server_;
};

// The toolkit would open a document, say with an alert that it cannot, or quit.
TEST_F(Shell, HidesTheArgumentsFromTheToolkit) {
  TempDir folder;
  writeFile(folder.path() / "document.txt", "x");
  DemoProcess demo({.display = server_.display(),
                    .arguments = {folder / "document.txt", "-NSOpen", "a.txt", "-GSBackend", "none",
                                  "--GNU-Debug=dflt", "-NSAutoLaunch", "YES", "QUIT"}});
  demo.commands({"init", "configure " QUILLORY_SOURCE_DIR "/examples/hello/nativesplash.png",
                 "show", "progress 10", "wait 300"});
  EXPECT_THAT(Screen(server_).shownWindows(), SizeIs(1));
  EXPECT_EQ(demo.finish().exitStatus, 0);
}

// Bit n-1 of the mask stands for signal n.
bool isIgnoredByChildren(DemoProcess& demo, int signal) {
  const std::string line = demo.command("shell grep SigIgn: /proc/self/status");
  const std::size_t digits = line.find_first_of("0123456789abcdef", line.find(':'));
  return (std::stoull(line.substr(digits), nullptr, 16) >> (signal - 1) & 1) != 0;
}

TEST_F(Shell, LeavesTheSignalsOfChildrenAlone) {
  DemoProcess demo({.display = server_.display()});
  demo.commands({"init", "show"});
  for (const int signal : {SIGPIPE, SIGTERM, SIGINT})
    EXPECT_FALSE(isIgnoredByChildren(demo, signal)) << signal;
}

TEST_F(Shell, EndsByTheSignalsThatEndOtherPrograms) {
  for (const int signal : {SIGTERM, SIGINT, SIGPIPE, SIGHUP}) {
    DemoProcess demo({.display = server_.display()});
    demo.commands({"init", "show", "progress -1"});
    demo.process().sendSignal(signal);
    EXPECT_EQ(demo.process().finish().signal, signal);
  }
}

// The application object would end the process by itself, without the JVM's shutdown hooks.
TEST_F(Shell, IsEndedByTheSignalWhereItIsAskedToQuit) {
  DemoProcess demo({.display = server_.display()});
  demo.commands({"init", "show"});
  demo.startCommand("terminate");
  const ChildResult result = demo.process().finish();
  EXPECT_EQ(result.signal, SIGTERM);
  EXPECT_EQ(countOf(result.err, "[Quillory] Asked to quit: ending as by SIGTERM\n"), 1);
}

TEST_F(Shell, LeavesTheEnvironmentOfChildrenAlone) {
  DemoProcess demo({.display = server_.display()});
  demo.commands({"init", "show"});
  EXPECT_THAT(demo.command("shell env"), Not(HasSubstr("XCOMPOSEFILE")));
  EXPECT_THAT(demo.command("shell env"), Not(HasSubstr("MAGICK_CODER_MODULE_PATH")));
}

TEST_F(Shell, LeavesNoFileBehind) {
  DemoProcess demo({.display = server_.display()});
  demo.commands(kWholeSplash);
  EXPECT_EQ(demo.finish().exitStatus, 0);
  EXPECT_THAT(filesIn(demo.home()), IsEmpty());
  EXPECT_THAT(filesIn(demo.temporary()), IsEmpty());
}

std::set<std::string> childrenOfThisProcess() {
  std::ifstream list("/proc/self/task/" + std::to_string(getpid()) + "/children");
  return {std::istream_iterator<std::string>(list), {}};
}

// Orphans become children of this process, where they are seen.
TEST_F(Shell, LeavesNoProcessBehind) {
  const std::set<std::string> before = childrenOfThisProcess();  // such as the X server
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  DemoProcess demo({.display = server_.display()});
  demo.commands(kWholeSplash);
  EXPECT_EQ(demo.finish().exitStatus, 0);
  EXPECT_EQ(childrenOfThisProcess(), before);
  prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST_F(Shell, StartsAtOnceAfterItWasKilled) {
  DemoProcess demo({.display = server_.display()});
  for (int start = 0; start < 3; ++start) {
    const auto begun = std::chrono::steady_clock::now();
    demo.commands({"init", "show", "progress -1"});
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 5s);
    EXPECT_THAT(Screen(server_).shownWindows(), SizeIs(1));
    demo.process().sendSignal(SIGKILL);
    EXPECT_EQ(demo.process().finish().signal, SIGKILL);
    demo.restart();
  }
}

// Someone who uses other programs of the toolkit has settings, and one of those programs was killed
// while it read them.
TEST_F(Shell, IsNotHeldUpByALockOnTheUsersSettings) {
  DemoProcess demo({.display = server_.display()});
  const std::string settings = demo.home() + "/GNUstep/Defaults";
  writeFile(settings + "/.GNUstepDefaults",
            "{ NSGlobalDomain = { GSBackend = nonexistent; NSLanguages = (English); }; }");
  writeFile(demo.home() + "/.GNUstep.conf", "GNUSTEP_USER_DEFAULTS_DIR=GNUstep/Defaults\n");
  std::filesystem::create_directories(settings + "/.lck/.GNUstepDefaults.lck");
  demo.restart();
  const auto begun = std::chrono::steady_clock::now();
  demo.commands(kWholeSplash);
  EXPECT_EQ(demo.finish().exitStatus, 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begun, 10s) << "the lock is waited for 20 seconds";
  EXPECT_TRUE(std::filesystem::exists(settings + "/.lck/.GNUstepDefaults.lck")) << "not ours";
}

TEST_F(Shell, LooksUpItsName) {
  DemoProcess demo({.display = server_.display(), .bundleName = "Tom &amp; \xc3\x84nne"});
  demo.command("wait 100");
  EXPECT_THAT(demo.log(), HasSubstr("String is Tom & \xc3\x84nne"));
}

// The main thread's first steps and those of the run thread meet in every order.
TEST_F(Shell, ComesToAnEndHoweverTheThreadsMeet) {
  for (int start = 0; start < 25; ++start) {
    DemoProcess demo({.display = start % 2 == 0 ? server_.display() : ""});
    demo.commands({"init", "configure " QUILLORY_SOURCE_DIR "/examples/hello/nativesplash.png",
                   "progress -1", "show", "cleanup"});
    ASSERT_EQ(demo.finish().exitStatus, 0) << "start " << start;
  }
}

}  // namespace
}  // namespace quillory::testing
