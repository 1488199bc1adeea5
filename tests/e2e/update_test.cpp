// What is installed meets what a new bundle carries.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "tests/e2e/launcher_run.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

class Update : public ::testing::Test {
 protected:
  /// Starts a bundle of its own made of `tail`.
  ChildResult startWith(const Tail& tail, const Parameters& parameters = {{"jre_name", "JRE"}}) {
    const TempDir folder;
    return start(HandMadeBundle(folder.str(), tail, parameters), user_, {"argument"});
  }

  TestUser user_;
  const std::string alias_ = user_.master() + "/Quillory-JRE-17-complete";
};

TEST_F(Update, OfTheSameVersionsJustRuns) {
  ASSERT_EQ(startWith(quickTail()).exitStatus, 0);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
  const ChildResult again = startWith(quickTail());
  EXPECT_EQ(countLine(again, "[Extractor] Running without extraction now"), 1);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

TEST_F(Update, ToANewerApplicationExtractsEverythingAgain) {
  startWith(quickTail());
  Tail newer = quickTail();
  newer.appVersion = "4";
  const ChildResult result = startWith(newer);
  EXPECT_EQ(result.exitStatus, 0);
  linesInOrder(result,
               {"[Extractor] Our App version is newer than existing latest version so will extract "
                "and run",
                "[Extractor] Note: Latest JRE version does exist",
                "[Extractor] Note: Latest GU version does exist",
                "[Rename] The target already exists. Deleting."});
  EXPECT_TRUE(fs::exists(user_.master() + "/Quillory-Demo-4-complete/hello.txt"));
  EXPECT_TRUE(fs::exists(user_.master() + "/Quillory-Demo-3-complete/hello.txt"));
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

TEST_F(Update, ToANewerUpdaterRunsTheNewUpdater) {
  startWith(quickTail());
  Tail newer = quickTail();
  newer.guVersion = "12";
  const ChildResult result = startWith(newer);
  EXPECT_EQ(countLine(result,
                      "[Extractor] Our GU version is newer than existing latest version so will "
                      "extract and run"),
            1);
  EXPECT_EQ(countLine(result, "[Extractor] Will now run latest GU Quillory-Quillory-12-complete"),
            1);
}

TEST_F(Update, ComparesVersionsAsNumbers) {
  Tail twelve = quickTail();
  twelve.guVersion = "12";
  startWith(twelve);
  Tail nine = quickTail();
  nine.guVersion = "9";
  EXPECT_EQ(countLine(startWith(nine), "[Extractor] Running without extraction now"), 1);
}

TEST_F(Update, OverTheSameRuntimeLeavesWhatAFirstInstallLeaves) {
  startWith(quickTail());
  startedArguments(user_);
  Tail newer = quickTail();
  newer.appVersion = "4";
  const auto begin = std::chrono::steady_clock::now();
  const ChildResult result = startWith(newer);
  const auto took = std::chrono::steady_clock::now() - begin;

  EXPECT_EQ(fs::read_symlink(alias_ + ".plugin/Contents/Home").string(), alias_);
  EXPECT_EQ(modeOf(alias_ + "/bin/java"), 0777U);
  EXPECT_TRUE(fs::is_regular_file(alias_ + "/lib/rt.jar"));
  for (const auto& entry : fs::recursive_directory_iterator(alias_))
    EXPECT_FALSE(entry.is_symlink()) << "stray link " << entry.path();
  EXPECT_THAT(result.out, Not(HasSubstr("[Rename] Could not rename")));
  EXPECT_THAT(result.out, Not(HasSubstr("Can do no better than a copy")));
  EXPECT_LT(took, std::chrono::seconds(3) + std::chrono::seconds(20)) << "sanity, not speed";
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

TEST_F(Update, ReplacesARuntimeThatIsBroken) {
  startWith(quickTail());
  startedArguments(user_);
  fs::remove(alias_ + "/lib/rt.jar");
  const ChildResult result = startWith(quickTail());
  linesInOrder(result, {"[Extractor] The existing JRE Quillory-JRE-17-complete is broken. "
                        "Instructing the wrapper to update.",
                        "[Extractor] No latest GU or JRE version exists, will check tail for "
                        "online/offline info",
                        "[Extractor] Note: No latest JRE version exists"});
  EXPECT_TRUE(fs::exists(alias_ + "/lib/rt.jar"));
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

TEST_F(Update, PutsTheShippedTrustStoreIntoTheRuntime) {
  Tail tail = quickTail();
  const std::string empty = emptyEntry("cacerts");
  tail.entries.replace(tail.entries.find(empty), empty.size(), fileEntry("cacerts", "shipped"));
  startWith(tail);
  EXPECT_EQ(readFile(alias_ + "/lib/security/cacerts"), "shipped");
}

TEST_F(Update, WithoutAShippedTrustStoreKeepsTheRuntimesOwn) {
  const ChildResult result = startWith(quickTail());
  EXPECT_EQ(readFile(alias_ + "/lib/security/cacerts"), "the runtime's own");
  EXPECT_EQ(countLine(result, "[Extractor] Override CACerts does not exist."), 1);
}

TEST_F(Update, FindsTheRuntimeUnderTheNameThatTheUserChose) {
  startWith(quickTail());
  startedArguments(user_);
  writeFile(user_.master() + "/QYApps/JreNameOverride", std::string("Mine\0", 5));
  const ChildResult result = startWith(quickTail());
  EXPECT_EQ(countLine(result, "[JREOverride] JRE name overriden to Mine"), 1);
  EXPECT_TRUE(fs::exists(user_.master() + "/Quillory-Mine-17-complete/bin/java"));
}

TEST_F(Update, WithARejectedUpdaterRunsTheNewestFolderAllTheSame) {
  startWith(quickTail());
  startedArguments(user_);
  Tail damaged = quickTail();
  damaged.guVersion = "2";
  damaged.jreVersion = "";
  damaged.appVersion = "";
  damaged.entries = updaterEntries({}, &otherKey());
  const ChildResult result = startWith(damaged);
  linesInOrder(result, {std::string(71, '*'),
                        "[ExtractArchive] ERROR - unable to verify signature of hash of archive.",
                        "[ExtractArchive] Quillory will disregard this update.",
                        "[Extractor] Will now run latest GU Quillory-Quillory-2-complete",
                        "Unable to open launch file " + user_.master() +
                            "/Quillory-Quillory-2-complete/QuilloryLaunch"});
  EXPECT_EQ(result.exitStatus, 1);
}

}  // namespace
}  // namespace quillory::testing
