#include "install/installation_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "support/clock.h"
#include "support/program.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using Taken = InstallationLock::Taken;

std::uint64_t slept = 0;
void noteSleep(std::uint64_t micros) { slept += micros; }

class Lock : public ::testing::Test {
 protected:
  Lock() { slept = 0; }

  Taken take(InstallationLock& lock) {
    return lock.take(master_.str(), [this] { ++turns_; });
  }

  TempDir master_;
  int turns_ = 0;
  CapturedLog log_;
  ScopedReplace<void (*)(std::uint64_t)> sleep_{timeCalls.sleepMicros, noteSleep};
};

TEST_F(Lock, IsTakenAtOnceWithoutAWord) {
  InstallationLock lock;
  EXPECT_EQ(take(lock), Taken::kAtOnce);
  EXPECT_EQ(turns_, 0);
  EXPECT_EQ(log_.text(), "");
  EXPECT_TRUE(fs::is_empty(master_.path())) << "it is no entry of the folder";
}

TEST_F(Lock, KeepsOthersOutUntilItIsReleased) {
  InstallationLock lock;
  InstallationLock other;
  take(lock);
  EXPECT_FALSE(other.tryToTake(master_.str()));
  lock.release();
  EXPECT_TRUE(other.tryToTake(master_.str()));
  EXPECT_FALSE(lock.tryToTake(master_.str()));
}

TEST_F(Lock, IsReleasedAtTheEndOfTheScope) {
  {
    InstallationLock lock;
    take(lock);
  }
  InstallationLock other;
  EXPECT_EQ(take(other), Taken::kAtOnce);
}

TEST_F(Lock, IsWaitedForWithATurnEachTime) {
  static InstallationLock* holder = nullptr;
  InstallationLock lock;
  take(lock);
  holder = &lock;
  const ScopedReplace releasing(
      timeCalls.sleepMicros, +[](std::uint64_t micros) {
        slept += micros;
        if (slept == 3 * kLockTurnMicros) holder->release();
      });
  InstallationLock other;
  EXPECT_EQ(take(other), Taken::kAfterWaiting);
  EXPECT_EQ(turns_, 3);
  EXPECT_EQ(log_.text(),
            "[Extractor] Another start is installing. Waiting until it has come to its end\n"
            "[Extractor] The other start has come to its end\n");
  EXPECT_FALSE(lock.tryToTake(master_.str()));
}

TEST_F(Lock, IsWaitedForTenMinutesAtMost) {
  InstallationLock lock;
  take(lock);
  InstallationLock other;
  EXPECT_EQ(take(other), Taken::kNot);
  EXPECT_EQ(slept, 600'000'000U);
  EXPECT_TRUE(
      log_.contains("[Extractor] The other start is still not at its end. Going on without "
                    "waiting\n"));
  EXPECT_FALSE(other.tryToTake(master_.str()));
}

TEST_F(Lock, IsNotWaitedForWhereThereIsNoFolder) {
  InstallationLock lock;
  EXPECT_EQ(lock.take(master_ / "missing", [] {}), Taken::kNot);
  EXPECT_FALSE(lock.tryToTake(master_ / "missing"));
  writeFile(master_ / "file", "");
  EXPECT_EQ(lock.take(master_ / "file", [] {}), Taken::kNot);
  EXPECT_EQ(slept, 0U);
}

TEST_F(Lock, IsNotWaitedForWhereTheFileSystemHasNone) {
  const ScopedReplace none(
      lockCalls.tryToLock, +[](int) { return ENOLCK; });
  InstallationLock lock;
  EXPECT_EQ(take(lock), Taken::kNot);
  EXPECT_EQ(slept, 0U);
  EXPECT_TRUE(log_.contains("[Extractor] The installation cannot be locked: "));
}

TEST_F(Lock, IsLetGoByTheSystemWhenItsHolderIsKilled) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    InstallationLock lock;
    take(lock);
    (void)!write(ready[1], "x", 1);
    pause();
  }
  char got = 0;
  ASSERT_EQ(read(ready[0], &got, 1), 1);
  InstallationLock other;
  EXPECT_FALSE(other.tryToTake(master_.str()));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(take(other), Taken::kAtOnce);
  close(ready[0]);
  close(ready[1]);
}

TEST_F(Lock, IsNotHandedOverToPrograms) {
  InstallationLock lock;
  take(lock);
  const ProgramResult listing = runProgram({"/bin/ls", "-l", "/proc/self/fd"},
                                           {.directory = {}, .output = ProgramOutput::kCaptured});
  EXPECT_EQ(listing.output.find(master_.str()), std::string::npos) << listing.output;
}

}  // namespace
}  // namespace quillory::testing
