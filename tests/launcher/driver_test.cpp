// Whole starts in a child process, with real archives and a shell script as `java`.
#include "launcher/driver.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

#include "install/install_locations.h"
#include "install/installation_lock.h"
#include "install/unfinished.h"
#include "support/clock.h"
#include "support/durable.h"
#include "support/exit_status.h"
#include "tests/harness/eventually.h"
#include "tests/harness/scoped_replace.h"
#include "tests/launcher/in_child.h"
#include "tests/launcher/test_bundle.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

/// Appends its arguments, one a line, to the file "started" in the master folder.
constexpr char kJava[] =
    "#!/bin/sh\n"
    "[ \"$1\" = -Xshare:dump ] && exit 0\n"
    "for argument in \"$@\"; do echo \"$argument\"; done >\"${0%/*/*/*}/starting\"\n"
    "mv \"${0%/*/*/*}/starting\" \"${0%/*/*/*}/started\"\n";

std::string launchFile(const char* mainClass) {
  return records(
      {"6", mainClass, "", "demo", "", "0", "0", "0", "1", "app.jar", "0", "", "", "", "0", "0"});
}

std::string updaterEntries(const char* mainClass) {
  return fileEntry("lzma64", "#!/bin/sh\nexit 1\n") + fileEntry("nativesplash.png", "picture") +
         emptyEntry("cacerts") + emptyEntry("verpatch.exe") +
         fileEntry("GU.p2", archiveOf(fileEntry("QuilloryLaunch", launchFile(mainClass)) +
                                      fileEntry("app.jar", "jar")));
}

std::string jreEntry(std::string_view java = kJava) {
  return fileEntry("JRE.p2", archiveOf(fileEntry("Contents/Home/bin/java", java) +
                                       fileEntry("Contents/Home/lib/rt.jar", "classes")));
}

std::string appEntries(std::string_view content) {
  return fileEntry("App.p2", archiveOf(fileEntry("hello.txt", content))) + emptyEntry("extra");
}

/// Updater 7, JRE 17 and application 3.
TailText offlineTail() {
  TailText tail;
  tail.guVersion = "7";
  tail.jreVersion = "17";
  tail.appVersion = "3";
  tail.updateUrl = "http://no.invalid/";
  return tail;
}

class ExtractWrapperTail : public ::testing::Test {
 protected:
  ExtractWrapperTail() {
    writeParams({{"jre_name", "jre"}, {"force_spawn", "true"}});
    writeTail(offlineTail(), updaterEntries("First") + jreEntry() + appEntries("hello"));
  }

  void writeParams(const Pairs& pairs) {
    bundle_.writeResource("AppParams.excludefromsigning", paramsFile(pairs));
  }
  void writeTail(const TailText& tail, const std::string& entries) {
    bundle_.writeResource("Tail", tail.bytes() + entries);
  }

  Ended start(std::vector<std::string> arguments = {}, bool prepareOnly = false) {
    arguments.insert(arguments.begin(), bundle_.exePath());
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    const int argc = static_cast<int>(argv.size());
    fs::remove(master_ + "/started");
    return inChild([&] {
      runStart(
          argv[0], {argc - 1, argv.data() + 1, argc, argv.data(), prepareOnly},
          {.homeFolder = [this] { return home_.str(); }, .isRelaunchedCopy = [] { return false; }});
    });
  }

  /// The arguments of the application, which the launcher does not wait for; "" when none starts.
  std::string started() const { return startedIn(master_); }

  static std::string startedIn(const std::string& masterFolder) {
    const std::string file = masterFolder + "/started";
    return eventually([&] { return fs::exists(file); }) ? readFile(file) : "";
  }

  /// The launch properties of the start whose arguments are `arguments`.
  static std::string launchProperties(const std::string& arguments) {
    const std::size_t begin = arguments.find("/QYLaunchProperties-");
    const std::size_t line = arguments.rfind('\n', begin) + 1;
    return readFile(arguments.substr(line, arguments.find('\n', begin) - line));
  }

  std::string installed(const std::string& inside) const { return master_ + "/" + inside; }

  TempDir home_;
  TestBundle bundle_;
  const std::string master_ = home_ / "Library/Application Support/Quillory-Demo";
};

void expectInOrder(const std::string& log, const std::vector<std::string>& lines) {
  std::size_t position = 0;
  for (const std::string& line : lines) {
    const std::size_t found = log.find(line, position);
    ASSERT_NE(found, std::string::npos) << "not there, or too early: " << line << "\nlog:\n" << log;
    position = found + line.size();
  }
}

/// Whether others may write, with a umask that would let them.
std::vector<std::string> openToOthers(const std::string& folder) {
  std::vector<std::string> found;
  const auto look = [&found](const fs::path& path) {
    const bool isOpen = (modeOf(path) & 022) != 0;
    if (isOpen && !fs::is_symlink(path)) found.push_back(path);
  };
  look(folder);
  for (const auto& entry : fs::recursive_directory_iterator(folder)) look(entry.path());
  return found;
}

TEST_F(ExtractWrapperTail, LeavesWritingToTheOwnerInAHardenedInstallation) {
  writeParams({{"jre_name", "jre"}, {"force_spawn", "true"}, {"hardened", "true"}});
  const mode_t before = umask(0);
  const Ended ended = start({}, true);
  umask(before);
  EXPECT_TRUE(fs::exists(installed("logs")));
  EXPECT_EQ(openToOthers(master_), std::vector<std::string>()) << ended.log;
  EXPECT_NE(ended.log.find("[ChMod] Executing chmod 755 \"" + master_ + "/logs\"\n"),
            std::string::npos);
}

// By intent: the launch call has said in the log what went wrong.
TEST_F(ExtractWrapperTail, EndsWithZeroWhateverTheLaunchCallReturned) {
  writeTail(offlineTail(),
            updaterEntries("First") + jreEntry("neither a program nor a script") + appEntries("a"));
  const Ended ended = start();
  expectInOrder(ended.log, {"[Extractor] Attempting spawn launch\n", "Launch Error 8.\n"});
  EXPECT_EQ(ended.status, kExitSuccess);
}

TEST_F(ExtractWrapperTail, OpensFoldersToEveryUserWithoutThatParameter) {
  start();
  for (const char* folder : {"", "logs", "QYAppsSharedConfig", "Quillory-Quillory-7-complete",
                             "Quillory-Demo-3-complete", "Quillory-jre-17-complete",
                             "Quillory-jre-17-complete/bin", "Quillory-jre-17-complete.plugin"})
    EXPECT_EQ(modeOf(installed(folder)), 0777U) << folder;
}

TEST_F(ExtractWrapperTail, InstallsEverythingAndStartsTheUpdater) {
  const Ended ended = start({"one", "two words"});
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_EQ(readFile(installed("Quillory-Demo-3-complete/hello.txt")), "hello");
  EXPECT_EQ(readFile(installed("Quillory-Quillory-7-complete/nativesplash.png")), "picture");
  EXPECT_EQ(readFile(installed("Quillory-jre-17-complete/lib/rt.jar")), "classes");
  EXPECT_TRUE(fs::is_symlink(installed("Quillory-jre-17-complete.plugin/Contents/Home")));
  EXPECT_TRUE(fs::is_directory(installed("QYAppsSharedConfig")));
  for (const auto& entry : fs::directory_iterator(master_))
    EXPECT_FALSE(entry.path().filename().string().starts_with("QuilloryTemp-")) << entry.path();

  const std::string arguments = started();
  const std::string gu = installed("Quillory-Quillory-7-complete");
  EXPECT_TRUE(
      arguments.starts_with("-cp\n" + gu + "/app.jar\nFirst\n" + gu + "/QYLaunchProperties-"))
      << arguments;
  EXPECT_TRUE(arguments.ends_with("\none\ntwo words\n")) << arguments;
}

TEST_F(ExtractWrapperTail, TellsItsStoryInOrder) {
  const Ended ended = start();
  expectInOrder(
      ended.log,
      {"[Extractor] The absolute wrapper path is " + bundle_.exePath() + "\n",
       "[Extractor] Found Params marker. Extracting now...\n",
       "--- End: Processing dynamic properties\n",
       "+++ Start: Extracting wrapper tail\n",
       "[Extractor] No tail found. Trying ",
       "[Extractor] Will use Static Update URL: http://no.invalid/\n",
       "[Extractor] Is silent install is 0\n",
       "--- End: Extracting tail\n",
       "[Extractor] Setting up static properties\n",
       "[Extractor] Public key length 0 (no public key)\n",
       "Permanent install for current user\nHomeDir is " + home_.str() + "\n",
       "[Extractor] Shared dir is " + (home_ / "Library/Application Support") + "\n",
       "[Extractor] Update URL is currently 'http://no.invalid/'\n"
       "[Extractor] Update URL is now 'http://no.invalid/'\n",
       "[Extractor] Master folder is " + master_ + "\n",
       "[Extractor] Logging to ",
       "[JREOverride] No JRE name override, will continue to use jre\n",
       "[Extractor] GenericUpdater version is 7\n[Extractor] OFFLINE wrapper: App version is 3\n"
       "[Extractor] Checking for a latest valid GU\n",
       "[Extractor] Note: No latest JRE version exists\n"
       "[Extractor] Note: No latest GU version exists\n",
       "[Extractor] GU folder is ",
       "[Extractor] GU temp is ",
       "[Extractor] LZMA path is ",
       "[Extractor] Extracted GU and GU Version\n",
       "[Extractor] Recreating GU location\n",
       "[Extractor] Configuring splash\n",
       "[Extractor] Showing splash\n",
       "ShowSplash",
       "[Extractor] Setting up a JRE\n",
       "[Extractor] JRE setup. Overriding cacerts.\n",
       "[Extractor] Ensuring JRE bin is writable.\n",
       "[Extractor] UP200 path is " + installed("Quillory-jre-17-complete.plugin/Contents/Home/") +
           "bin/unpack200\n",
       "[Extractor] Offline installer - app to extract.",
       "[Extractor] Renaming App folder to ",
       "Called splash.cleanup",
       "[Extractor] Will now run latest GU Quillory-Quillory-7-complete\n",
       "+++ Start: Launching"});
  started();
}

TEST_F(ExtractWrapperTail, LogsIntoTheMasterFolder) {
  start();
  started();
  int count = 0;
  for (const auto& entry : fs::directory_iterator(master_ + "/logs")) {
    ++count;
    EXPECT_NE(readFile(entry.path()).find("[Extractor] Checking for a latest valid GU\n"),
              std::string::npos);
  }
  EXPECT_EQ(count, 1);
}

TEST_F(ExtractWrapperTail, RunsWhatIsInstalledTheSecondTime) {
  start();
  started();
  const Ended ended = start({"again"});
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(ended.logs("[Extractor] Running without extraction now\n"));
  EXPECT_FALSE(ended.logs("[ExtractArchiveFile]"));
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_TRUE(ended.logs("Called splash.cleanup"));
  EXPECT_TRUE(started().ends_with("\nagain\n"));
}

TEST_F(ExtractWrapperTail, ExtractsEverythingAgainForANewerApplication) {
  start();
  started();
  TailText tail = offlineTail();
  tail.appVersion = "4";
  writeTail(tail, updaterEntries("Second") + jreEntry() + appEntries("hello from 4"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_EQ(readFile(installed("Quillory-Demo-4-complete/hello.txt")), "hello from 4");
  EXPECT_EQ(readFile(installed("Quillory-Demo-3-complete/hello.txt")), "hello");
  EXPECT_EQ(readFile(installed("Quillory-jre-17-complete/lib/rt.jar")), "classes");
  // The updater, too, is that of the new tail, although its version is the same.
  EXPECT_NE(started().find("\nSecond\n"), std::string::npos);
}

TEST_F(ExtractWrapperTail, ExtractsForABrokenJreEvenIfTheUpdaterIsCurrent) {
  start();
  started();
  fs::remove(installed("Quillory-jre-17-complete/lib/rt.jar"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(ended.logs("[Extractor] The existing JRE Quillory-jre-17-complete is broken."));
  EXPECT_EQ(readFile(installed("Quillory-jre-17-complete/lib/rt.jar")), "classes");
  EXPECT_NE(started(), "");
}

TEST_F(ExtractWrapperTail, CannotRunAsALauncherOnlyWithNothingInstalled) {
  TailText tail;
  writeTail(tail, "");
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("[Extractor] No GenericUpdater embedded, we are just a launcher\n"));
  EXPECT_TRUE(
      ended.logs("[Extractor] ONLINE wrapper: No App embedded, GU will download and run\n"));
  EXPECT_TRUE(ended.logs("[Extractor] Unable to run (we are just a launcher)\n"));
}

TEST_F(ExtractWrapperTail, RunsAnInstalledUpdaterAsALauncherOnly) {
  start();
  started();
  writeTail({}, "");
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_NE(started(), "");
}

TEST_F(ExtractWrapperTail, ExtractsNoApplicationOfAnOnlineInstaller) {
  start();
  started();
  TailText tail = offlineTail();
  tail.guVersion = "8";
  tail.jreVersion = "";
  tail.appVersion = "";
  writeTail(tail, updaterEntries("Eighth"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(ended.logs("[Extractor] Online installer - no app to extract\n"));
  EXPECT_NE(started().find("\nEighth\n"), std::string::npos);
}

TEST_F(ExtractWrapperTail, OnlyInstallsInAPreparation) {
  const Ended ended = start({"one", "QYPREPARE_FOR_LAUNCH_ONLY"}, true);
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(fs::exists(installed("Quillory-Demo-3-complete/hello.txt")));
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_FALSE(ended.logs("+++ Start: Launching"));
  EXPECT_EQ(start({}, true).status, kExitSuccess);
  EXPECT_FALSE(fs::exists(installed("started")));
}

TEST_F(ExtractWrapperTail, ShowsNothingInASilentRunAndSaysSoToJava) {
  const Ended ended = start({"-quiet"});
  EXPECT_TRUE(ended.logs("[Extractor] Is silent install is 1\n"));
  EXPECT_TRUE(ended.logs("[Extractor] Showing splash\n"));
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_NE(launchProperties(started()).find("qystat_show_no_ui\0true\0"s), std::string::npos);
}

TEST_F(ExtractWrapperTail, IsSilentByAParameterToo) {
  writeParams({{"jre_name", "jre"}, {"force_spawn", "true"}, {"show_no_ui", "true"}});
  const Ended ended = start();
  EXPECT_TRUE(ended.logs("[Extractor] Is silent install is 1\n"));
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_NE(started(), "");
}

TEST_F(ExtractWrapperTail, TellsJavaWhereItWasStartedFrom) {
  start();
  EXPECT_NE(
      launchProperties(started()).find("qystat_launched_from_dynprops\0"s + bundle_.exePath()),
      std::string::npos);
}

TEST_F(ExtractWrapperTail, TellsJavaAStaticUrlOnceAsReadAndOnceWithItsSlash) {
  TailText tail = offlineTail();
  tail.updateUrl = "http://no.invalid/x";
  writeTail(tail, updaterEntries("First") + jreEntry() + appEntries("hello"));
  start();
  const std::string properties = launchProperties(started());
  EXPECT_NE(properties.find("qystat_update_url\0http://no.invalid/x\0"s), std::string::npos);
  EXPECT_NE(properties.find("qystat_update_url\0http://no.invalid/x/\0"s), std::string::npos);
}

TEST_F(ExtractWrapperTail, TellsJavaADynamicUrlWithItsSlashAtLaunch) {
  writeParams(
      {{"jre_name", "jre"}, {"force_spawn", "true"}, {"update_url", "http://no.invalid/d"}});
  TailText tail = offlineTail();
  tail.updateUrl = "D";
  writeTail(tail, updaterEntries("First") + jreEntry() + appEntries("hello"));
  start();
  const std::string properties = launchProperties(started());
  EXPECT_NE(properties.find("qydyna_update_url\0http://no.invalid/d\0"s), std::string::npos);
  EXPECT_NE(properties.find("qydyna_update_url\0http://no.invalid/d/\0"s), std::string::npos);
  EXPECT_NE(properties.find("qystat_update_url\0D\0"s), std::string::npos);
}

TEST_F(ExtractWrapperTail, TellsJavaNoDynamicUrlWhereThereIsNone) {
  TailText tail = offlineTail();
  tail.updateUrl = "D";
  writeTail(tail, updaterEntries("First") + jreEntry() + appEntries("hello"));
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_EQ(launchProperties(started()).find("qydyna_update_url"), std::string::npos);
}

TEST_F(ExtractWrapperTail, FindsTheJreUnderTheOverridingName) {
  writeFile(installed("QYApps/JreNameOverride"), records({"own"}));
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_TRUE(fs::exists(installed("Quillory-own-17-complete/bin/java")));
  EXPECT_NE(started(), "");
}

TEST_F(ExtractWrapperTail, ReadsATailInsideTheExecutableFirst) {
  TailText inside = offlineTail();
  inside.appName = "Inside";
  writeFile(bundle_.exePath(), "machine code" + tailMarker() + inside.bytes() +
                                   updaterEntries("First") + jreEntry() + appEntries("hello"));
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_NE(startedIn(home_ / "Library/Application Support/Quillory-Inside"), "");
  EXPECT_FALSE(fs::exists(master_));
}

TEST_F(ExtractWrapperTail, RefusesNamesThatLeadOutOfTheSharedDirectory) {
  TailText tail = offlineTail();
  tail.appName = "x/../../../escaped";
  writeTail(tail, "");
  EXPECT_EQ(start().status, kExitFailure);
  EXPECT_TRUE(fs::is_empty(home_.path()));

  writeParams({{"jre_name", "x/../../escaped"}});
  writeTail(offlineTail(), updaterEntries("First") + jreEntry() + appEntries("hello"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("The JRE name 'x/../../escaped'"));
  EXPECT_FALSE(fs::exists(installed("Quillory-Quillory-7-complete")));
}

TEST_F(ExtractWrapperTail, RepairsWhatAKillHasLeftBehindItsUpdater) {
  start();
  started();
  const std::string gu = installed("Quillory-Quillory-7-complete");
  EXPECT_FALSE(isUnfinished(gu));
  markUnfinished(gu);
  fs::remove_all(installed("Quillory-Demo-3-complete/hello.txt"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_EQ(readFile(installed("Quillory-Demo-3-complete/hello.txt")), "hello");
  EXPECT_FALSE(isUnfinished(gu));
  EXPECT_NE(started(), "");
  EXPECT_TRUE(start().logs("[Extractor] Running without extraction now\n"));
}

TEST_F(ExtractWrapperTail, BringsBackWhatAKillHasLeftAside) {
  start();
  started();
  fs::create_directory(installed(".replaced"));
  for (const char* name : {"Quillory-Demo-3-complete", "Quillory-jre-17-complete"})
    fs::rename(installed(name), installed(".replaced/") + name);
  const Ended ended = start();
  EXPECT_TRUE(ended.logs("[Extractor] Running without extraction now\n"));
  EXPECT_EQ(readFile(installed("Quillory-Demo-3-complete/hello.txt")), "hello");
  EXPECT_FALSE(fs::exists(installed(".replaced")));
  EXPECT_NE(started(), "");
}

/// Kills the process when something is flushed for the `killAt`-th time.
int flushes = 0;
int killAt = 0;
int flushOrBeKilled(int, const std::string&) {
  if (++flushes == killAt) kill(getpid(), SIGKILL);
  return 0;
}

/// Names and contents, without what every start adds.
std::map<std::string, std::string> treeOf(const std::string& folder) {
  std::map<std::string, std::string> tree;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string path = entry.path().string().substr(folder.size());
    if (path.starts_with("/logs") || path.find("/QYLaunchProperties-") != path.npos) continue;
    tree[path] = entry.is_symlink()        ? "-> " + fs::read_symlink(entry.path()).string()
                 : entry.is_regular_file() ? readFile(entry.path())
                                           : "a folder";
  }
  return tree;
}

TEST_F(ExtractWrapperTail, IsWholeAfterOneMoreStartWhereverAnUpdateIsKilled) {
  const ScopedReplace noWait(
      timeCalls.sleepMicros, +[](std::uint64_t) {});
  const TempDir before;
  start({}, true);
  fs::copy(master_, before / "master",
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  // Updater and runtime of the same versions, but of other bytes, and the same application.
  TailText newer = offlineTail();
  for (const char* const guVersion : {"7", "8"}) {
    SCOPED_TRACE(guVersion);
    newer.guVersion = guVersion;
    std::map<std::string, std::string> whole;
    int kills = 0;
    for (killAt = 0; kills == killAt - (killAt > 0); ++killAt) {
      SCOPED_TRACE(killAt);
      fs::remove_all(master_);
      fs::copy(before / "master", master_,
               fs::copy_options::recursive | fs::copy_options::copy_symlinks);
      // For the same version there is a reason, too.
      if (newer.guVersion == "7") markUnfinished(installed("Quillory-Quillory-7-complete"));
      writeTail(newer, updaterEntries("Second") + jreEntry(std::string(kJava) + "# second\n") +
                           appEntries("hello"));
      flushes = 0;
      {
        const ScopedReplace tree(durableCalls.flushTree, flushOrBeKilled);
        const ScopedReplace folder(durableCalls.flushFolder, flushOrBeKilled);
        const ScopedReplace file(durableCalls.flushFile, flushOrBeKilled);
        if (start({}, true).status == -1) ++kills;
      }
      start({}, true);
      if (killAt == 0) whole = treeOf(master_);
      EXPECT_EQ(treeOf(master_), whole);
    }
    EXPECT_GT(kills, 5);
    EXPECT_EQ(whole.count("/Quillory-Quillory-" + newer.guVersion + "-complete/.unfinished"), 0U);
    EXPECT_NE(whole["/Quillory-jre-17-complete/bin/java"].find("# second"), std::string::npos);
  }
}

// Not in a thread: start() forks, and a thread that allocates at that moment leaves its lock to a
// process without it.
pid_t inAnotherProcess(const std::function<void()>& work) {
  const pid_t process = fork();
  if (process == 0) {
    work();
    _exit(0);
  }
  return process;
}

int firstWaitTold = -1;

// Tells another process when a start begins to wait.
class FirstWait {
 public:
  FirstWait() {
    if (pipe(ends_) != 0) throw std::runtime_error("no pipe");
    firstWaitTold = ends_[1];
  }
  ~FirstWait() {
    close(ends_[0]);
    close(ends_[1]);
  }
  FirstWait(const FirstWait&) = delete;
  FirstWait& operator=(const FirstWait&) = delete;

  void untilItBegins() const {
    char told;
    if (read(ends_[0], &told, 1) != 1) _exit(1);
  }

 private:
  int ends_[2];
  ScopedReplace<decltype(timeCalls.sleepMicros)> sleep_{
      timeCalls.sleepMicros, +[](std::uint64_t micros) {
        (void)!write(firstWaitTold, "x", 1);
        std::this_thread::sleep_for(std::chrono::microseconds(micros));
      }};
};

TEST_F(ExtractWrapperTail, WaitsForTheStartThatInstallsAndRunsWhatItHasInstalled) {
  InstallationLock other;
  start({}, true);
  const TempDir before;
  fs::rename(installed("Quillory-jre-17-complete"), before / "alias");
  ASSERT_TRUE(other.tryToTake(master_));
  const FirstWait wait;
  const pid_t finishing = inAnotherProcess([&] {
    wait.untilItBegins();
    fs::rename(before / "alias", installed("Quillory-jre-17-complete"));
    other.release();
  });
  const Ended ended = start();
  waitpid(finishing, nullptr, 0);
  EXPECT_EQ(ended.status, kExitSuccess);
  expectInOrder(ended.log,
                {"[Extractor] Note: No latest JRE version exists\n",
                 "[Extractor] Another start is installing. Waiting until it has come to its end\n",
                 "[Extractor] Configuring splash\n", "ShowSplash",
                 "[Extractor] The other start has come to its end\n",
                 "[Extractor] Another start may have installed something, will check again\n",
                 "[Extractor] Running without extraction now\n", "Called splash.cleanup"});
  EXPECT_FALSE(ended.logs("[ExtractArchiveFile]"));
  EXPECT_NE(started(), "");
}

TEST_F(ExtractWrapperTail, ShowsNothingWhileItWaitsInASilentRun) {
  InstallationLock other;
  start({}, true);
  fs::remove_all(installed("Quillory-jre-17-complete"));
  ASSERT_TRUE(other.tryToTake(master_));
  const FirstWait wait;
  const pid_t finishing = inAnotherProcess([&] {
    wait.untilItBegins();
    other.release();
  });
  const Ended ended = start({"-quiet"});
  waitpid(finishing, nullptr, 0);
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_TRUE(ended.logs("[Extractor] The other start has come to its end\n"));
  EXPECT_NE(started(), "");
}

TEST_F(ExtractWrapperTail, WaitsForNobodyWhereEverythingIsCurrent) {
  start();
  started();
  InstallationLock other;
  ASSERT_TRUE(other.tryToTake(master_));
  const Ended ended = start({"again"});
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(started().ends_with("\nagain\n"));
}

TEST_F(ExtractWrapperTail, RunsTheApplicationWithoutTheLock) {
  start();
  started();
  InstallationLock other;
  EXPECT_TRUE(other.tryToTake(master_));
}

TEST_F(ExtractWrapperTail, ClearsUpBehindAKilledStartButNotBehindOneThatIsAtWork) {
  start();
  started();
  const std::string left = installed("QuilloryTemp-1700000000-9-app");
  writeFile(left + "/file", "");
  {
    InstallationLock other;
    ASSERT_TRUE(other.tryToTake(master_));
    start();
    EXPECT_NE(started(), "");
    EXPECT_TRUE(fs::exists(left));
  }
  start();
  EXPECT_NE(started(), "");
  EXPECT_FALSE(fs::exists(left));
}

TEST_F(ExtractWrapperTail, EndsWithTheStatusOfAnExtractionThatFails) {
  const std::string refused = fileEntry("../out", "x");
  const std::string packed = fileEntry("App.p2", archiveOf(records({"2", "a.jar", "3"}) + "abc"));
  const std::string updater = updaterEntries("First");
  const struct {
    const char* where;
    std::string entries;
    int status;
  } kCases[] = {{"updater", refused, kExitFailure},
                {"JRE", updater + refused, kExitFailure},
                {"application", updater + jreEntry() + refused, kExitFailure},
                {"pack200", updater + jreEntry() + packed, kExitUnpack200Failed}};
  for (const auto& [where, entries, status] : kCases) {
    SCOPED_TRACE(where);
    fs::remove_all(home_ / "Library");
    writeTail(offlineTail(), entries);
    const Ended ended = start();
    EXPECT_EQ(ended.status, status);
    EXPECT_FALSE(ended.logs("+++ Start: Launching"));
    EXPECT_FALSE(fs::exists(installed("Quillory-Demo-3-complete")));
  }
}

TEST_F(ExtractWrapperTail, EndsWithoutParameters) {
  fs::remove(bundle_.resource("AppParams.excludefromsigning"));
  Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.log.ends_with("couldn't open params file\n"));

  bundle_.writeResource("AppParams.excludefromsigning", "no marker");
  ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.log.ends_with("Could not find marker: Params\n"));
}

TEST_F(ExtractWrapperTail, EndsWithoutATail) {
  fs::remove(bundle_.resource("Tail"));
  Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.log.ends_with("/../Resources/Tail\n"));

  fs::remove(bundle_.exePath());
  ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.log.ends_with("couldn't open file " + bundle_.exePath() + "\n"));
}

TEST_F(ExtractWrapperTail, EndsWhereTheApplicationHasNoTemporaryFolder) {
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{9000}; });
  writeTail(offlineTail(),
            updaterEntries("First") +
                jreEntry("#!/bin/sh\n: >\"${0%/*/*/*/*/*}\"/QuilloryTemp-9-4-app\n") +
                appEntries("hello"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("\nUnable to create App Temp folder\n")) << ended.log;
}

TEST_F(ExtractWrapperTail, EndsWithoutASharedDirectory) {
  const Ended ended = inChild([&] {
    std::string path = bundle_.exePath();
    char* argv[] = {path.data()};
    runStart(argv[0], {0, argv + 1, 1, argv, false}, {.homeFolder = [] { return std::string(); }});
  });
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("ERROR: Unable to get shared dir!"));
}

TEST_F(ExtractWrapperTail, EndsWhereNoUpdaterIsLeftAfterExtraction) {
  writeTail(offlineTail(),
            updaterEntries("First") +
                jreEntry("#!/bin/sh\nrm -r \"${0%/*/*/*/*/*}\"/Quillory-Quillory-*\n") +
                appEntries("hello"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("No latest App version even after download!\n"));
}

TEST_F(ExtractWrapperTail, LaunchesNothingFromAnUpdaterThatIsEmpty) {
  // What an archive with a bad signature leaves behind.
  writeTail(offlineTail(), fileEntry("lzma64", "tool") + fileEntry("nativesplash.png", "picture") +
                               emptyEntry("a") + emptyEntry("b") + emptyEntry("c") + jreEntry() +
                               appEntries("hello"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("Unable to open launch file " +
                         installed("Quillory-Quillory-7-complete/QuilloryLaunch") + "\n"));
}

/// A start that cannot create its temporary folder, because a file of its name is there.
class ExtractWrapperTailElevated : public ExtractWrapperTail {
 protected:
  ExtractWrapperTailElevated() {
    for (const std::string& path : {bundle_.exePath(), bundle_.executable().resource("elev_mac")})
      bundle_.writeScript(path,
                          "#!/bin/sh\nfor a in \"$@\"; do echo \"$a\"; done >\"$0.called\"\n");
    fs::create_directories(master_ + "/logs");
    fs::create_directories(master_ + "/QYAppsSharedConfig");
    blockTemporaryFolders();
  }

  // The entries of the master folder are counted from 104 on, and no more names than these tried.
  void blockTemporaryFolders() {
    for (int count = 104; count < 204; ++count)
      writeFile(master_ + "/QuilloryTemp-9-" + std::to_string(count) + "-app", "in the way");
  }

  Ended startElevated(bool prepareOnly, bool isRelaunched = false) {
    const std::string shared = shared_.str();
    const ScopedReplace clock(
        timeCalls.nowMillis, +[] { return std::uint64_t{9000}; });
    std::string path = bundle_.exePath(), one = "one", last = kLast;
    char* argv[] = {path.data(), one.data(), last.data(), nullptr};
    return inChild([&] {
      StartSurroundings around{.homeFolder = [this] { return home_.str(); },
                               .sharedTemporaryFolder = shared};
      // A forked child has a parent that runs the same executable, as a relaunched copy has.
      if (!isRelaunched) around.isRelaunchedCopy = [] { return false; };
      runStart(argv[0], {2, argv + 1, 3, argv, prepareOnly}, around);
    });
  }

  static constexpr char kLast[] = "two words";
  TempDir shared_;
};

TEST_F(ExtractWrapperTailElevated, ElevatesAndRelaunchesWithItsOwnArguments) {
  const Ended ended = startElevated(false);
  EXPECT_EQ(ended.status, kExitSuccess) << ended.log;
  expectInOrder(
      ended.log,
      {"[Extractor] Unable to create GU Temp folder - assuming elevation required\n",
       "[Extractor] Native Splash PNG path is " + (shared_ / "nativesplash.png") + "\n",
       "[Extractor] Configuring splash\n", "[Extractor] Performing elevated setup and launch\n",
       "[SUDO] Elevation required.\n", "ShowSplash", "[SUDO] Relaunch complete\n"});
  EXPECT_EQ(
      readFile(bundle_.executable().resource("elev_mac") + ".called"),
      "--prompt=Demo\n" + bundle_.exePath() + "\none\ntwo words\nQYPREPARE_FOR_LAUNCH_ONLY\n");
  EXPECT_EQ(readFile(bundle_.exePath() + ".called"), "one\ntwo words\n");
  EXPECT_EQ(readFile(shared_ / "nativesplash.png"), "picture");
}

TEST_F(ExtractWrapperTailElevated, DoesNotElevateTheElevatedCopy) {
  const Ended ended = startElevated(true);
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_FALSE(ended.logs("[SUDO] Elevation required.\n"));
  EXPECT_FALSE(fs::exists(bundle_.executable().resource("elev_mac") + ".called"));
}

TEST_F(ExtractWrapperTailElevated, DoesNotElevateARelaunchedCopy) {
  const Ended ended = startElevated(false, true);
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("Will not elevate again.\n"));
  EXPECT_FALSE(fs::exists(bundle_.executable().resource("elev_mac") + ".called"));
  EXPECT_TRUE(fs::is_empty(shared_.path()));
}

TEST(IsSilent, NeedsOneArgumentThatIsExactlyTheParameter) {
  char quiet[] = "-quiet", other[] = "-QUIET", longer[] = "-quietly";
  char* args[] = {other, longer, quiet};
  EXPECT_TRUE(isSilent("-quiet", 3, args));
  EXPECT_FALSE(isSilent("-quiet", 2, args));
  EXPECT_FALSE(isSilent("-quiet", 0, args));
  EXPECT_FALSE(isSilent("-quiet", -1, args));
}

TEST(IsSilent, IsFalseForAnEmptyParameterWhateverTheArguments) {
  char empty[] = "";
  char* args[] = {empty};
  EXPECT_FALSE(isSilent("", 1, args));
  EXPECT_FALSE(isSilent(nullptr, 1, args));
}

}  // namespace
}  // namespace quillory::testing
