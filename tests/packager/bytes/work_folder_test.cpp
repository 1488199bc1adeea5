#include "packager/bytes/work_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::modeOf;
using testing::TempDir;
using testing::writeFile;

TEST(WorkFolder, IsGoneWithEverythingInIt) {
  TempDir dir;
  {
    WorkFolder work(dir / "new/dist");
    writeFile(work / "a/b", "x");
    EXPECT_TRUE(fs::exists(work / "a/b"));
  }
  EXPECT_TRUE(fs::is_empty(dir / "new/dist"));
}

TEST(WorkFolder, ReportsWhereItCannotBe) {
  EXPECT_THROW(WorkFolder("/proc/nonexistent"), PackError);
}

TEST(WorkFolder, StandsInItsParentForItsOwnerAlone) {
  TempDir dir;
  WorkFolder one(dir.str()), two(dir.str());
  EXPECT_EQ(fs::path(one.path()).parent_path(), dir.path());
  EXPECT_EQ(fs::path(one.path()).filename().string()[0], '.');
  EXPECT_NE(one.path(), two.path());
  EXPECT_EQ(modeOf(one.path()), 0700u);
  EXPECT_EQ(one / "a/b", one.path() + "/a/b");
}

TEST(WorkFolder, NamesTheParentThatIsNoFolder) {
  TempDir dir;
  writeFile(dir / "file", "x");
  try {
    WorkFolder work(dir / "file");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(e.finding().place.file, dir / "file");
  }
  try {
    WorkFolder work("/proc");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()),
              "/proc: error: no folder can be made in it: No such file or directory");
  }
}

// Signals, each in a process of its own: what they change lasts.
class Interruption : public ::testing::TestWithParam<int> {};

// Ends the process with 0 where the test is right.
void noticeOne(int number) {
  noticeInterruptions();
  if (interruptingSignal() != 0) std::_Exit(1);
  stopIfInterrupted();
  std::raise(number);
  if (interruptingSignal() != number) std::_Exit(2);
  try {
    stopIfInterrupted();
  } catch (const PackError& e) {
    std::_Exit(e.what() == std::string("interrupted") ? 0 : 3);
  }
  std::_Exit(4);
}

void askTwice(int number) {
  noticeInterruptions();
  std::raise(number);
  std::raise(number);
  std::_Exit(0);
}

void askWhoIgnores(int number) {
  std::signal(number, SIG_IGN);
  noticeInterruptions();
  std::raise(number);
  std::_Exit(interruptingSignal());
}

TEST_P(Interruption, IsNoticedAndThrownAtTheNextChance) {
  EXPECT_EXIT(noticeOne(GetParam()), ::testing::ExitedWithCode(0), "");
}

TEST_P(Interruption, EndsTheProcessWhenItComesTwice) {
  EXPECT_EXIT(askTwice(GetParam()), ::testing::KilledBySignal(GetParam()), "");
}

TEST_P(Interruption, StaysIgnoredWhereItWas) {
  EXPECT_EXIT(askWhoIgnores(GetParam()), ::testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(EachSignal, Interruption, ::testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& each) {
                           return each.param == SIGINT    ? "Interrupt"
                                  : each.param == SIGTERM ? "Termination"
                                                          : "HangUp";
                         });

}  // namespace
}  // namespace quillory::pack
