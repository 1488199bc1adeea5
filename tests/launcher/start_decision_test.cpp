#include "launcher/start_decision.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

#include "install/installation_lock.h"
#include "install/unfinished.h"
#include "support/clock.h"
#include "support/durable.h"
#include "support/exit_status.h"
#include "tests/harness/scoped_replace.h"
#include "tests/launcher/whole_start.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

class DecideInTurn : public WholeStart {};

TEST_F(DecideInTurn, RunsWhatIsInstalledTheSecondTime) {
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

TEST_F(DecideInTurn, RepairsWhatAKillHasLeftBehindItsUpdater) {
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

TEST_F(DecideInTurn, BringsBackWhatAKillHasLeftAside) {
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

TEST_F(DecideInTurn, IsWholeAfterOneMoreStartWhereverAnUpdateIsKilled) {
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
      writeTail(newer, updaterEntries("Second") +
                           jreEntry(std::string(kStartedJava) + "# second\n") +
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

TEST_F(DecideInTurn, WaitsForTheStartThatInstallsAndRunsWhatItHasInstalled) {
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

TEST_F(DecideInTurn, ShowsNothingWhileItWaitsInASilentRun) {
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

TEST_F(DecideInTurn, WaitsForNobodyWhereEverythingIsCurrent) {
  start();
  started();
  InstallationLock other;
  ASSERT_TRUE(other.tryToTake(master_));
  const Ended ended = start({"again"});
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(started().ends_with("\nagain\n"));
}

TEST_F(DecideInTurn, ClearsUpBehindAKilledStartButNotBehindOneThatIsAtWork) {
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

}  // namespace
}  // namespace quillory::testing
