// Update URLs that lead nowhere, and servers that say nothing: what an installer does that brings
// its runtime, and what one does that needs the URL.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "tests/e2e/online_machine.h"

namespace quillory::testing {
namespace {

using std::chrono::duration;
using std::chrono::steady_clock;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

/// Silence of a minute ends a transfer; the fast clock makes two seconds of it. A version file has
/// twenty seconds in all.
constexpr double kMinuteOfTheFastClock = 60.0 / 30;
constexpr double kTwentySecondsOfTheFastClock = 20.0 / 30;
/// Much more than a start takes, much less than a minute.
constexpr double kAtOnce = 15;

class UpdateUrl : public ::testing::Test {
 protected:
  struct Timed {
    ChildResult result;
    double seconds;
  };

  Timed start(const Tail& tail) { return start(tail, machine_.options()); }
  Timed start(const Tail& tail, const ChildOptions& options) {
    const auto begin = steady_clock::now();
    const ChildResult result = machine_.start(tail, {}, options);
    return {result, duration<double>(steady_clock::now() - begin).count()};
  }

  ChildOptions withFastClock() {
    ChildOptions options = machine_.options();
    options.environment["LD_PRELOAD"] += ":" QUILLORY_FAST_CLOCK;
    return options;
  }

  static Tail offlineTail(const std::string& updateUrl) {
    Tail tail = quickTail();
    tail.updateUrl = updateUrl;
    return tail;
  }

  void expectInstalled(const ChildResult& result) {
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    EXPECT_THAT(startedArguments(machine_.user()), Contains("argument"));
  }

  OnlineMachine machine_;
  HttpServer server_;
};

TEST_F(UpdateUrl, ThatIsEmptyDoesNotDelayAnOfflineInstaller) {
  const auto [result, seconds] = start(offlineTail(""));
  expectInstalled(result);
  EXPECT_LT(seconds, kAtOnce);
  EXPECT_THAT(result.err, HasSubstr("Download failed"));
}

TEST_F(UpdateUrl, ThatSwitchesUpdatesOffIsNotAsked) {
  const auto [result, seconds] = start(offlineTail("http://no.invalid/updates/"));
  expectInstalled(result);
  EXPECT_LT(seconds, kAtOnce);
  EXPECT_EQ(countLine(result, "[Extractor] Invalid Update URL. Skipping..."), 1);
  EXPECT_THAT(result.err, Not(HasSubstr("Starting download")));
}

TEST_F(UpdateUrl, IsAskedForTheVersionByAnOfflineInstaller) {
  publishRuntime(server_, "18", "");
  const auto [result, seconds] = start(offlineTail(server_.url()));
  expectInstalled(result);
  EXPECT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(readFile(machine_.master() + "/Quillory-Quillory-1-complete/Quillory-JRE-version.txt"),
            "18\n");
}

TEST_F(UpdateUrl, OfASilentServerDelaysAnOfflineInstallerByTwentySeconds) {
  server_.answer(kVersionPath, answerSilence());
  const auto [result, seconds] = start(offlineTail(server_.url()), withFastClock());
  expectInstalled(result);
  EXPECT_GE(seconds, kTwentySecondsOfTheFastClock);
  EXPECT_THAT(result.err, HasSubstr("not complete after 20 seconds"));
}

// Never silent for long: three seconds of the fast clock between two bytes.
TEST_F(UpdateUrl, OfADrippingServerDelaysAnOfflineInstallerNoLonger) {
  server_.answer(kVersionPath, answerInPieces("1", 100'000, std::chrono::milliseconds(100)));
  const auto [result, seconds] = start(offlineTail(server_.url()), withFastClock());
  expectInstalled(result);
  EXPECT_GE(seconds, kTwentySecondsOfTheFastClock);
  EXPECT_LT(seconds, kAtOnce);
  EXPECT_THAT(result.out, HasSubstr("[Download] Nothing came: not complete after 20 seconds ("));
  EXPECT_THAT(namesIn(machine_.master() + "/Quillory-Quillory-1-complete"),
              Not(Contains(HasSubstr("version.txt"))));
}

TEST_F(UpdateUrl, OfAnEndlessServerDoesNotFillTheDiskOfAnOfflineInstaller) {
  HttpAnswer endless = answerWithoutLength(std::string(60'000, '1'));
  endless.bodyCount = 1'000'000;
  server_.answer(kVersionPath, endless);
  const auto [result, seconds] = start(offlineTail(server_.url()));
  expectInstalled(result);
  EXPECT_LT(seconds, kAtOnce);
  EXPECT_THAT(result.out, HasSubstr("[Download] Nothing came: more than 65536 bytes ("));
  EXPECT_THAT(namesIn(machine_.master() + "/Quillory-Quillory-1-complete"),
              Not(Contains(HasSubstr("version.txt"))));
}

TEST_F(UpdateUrl, ThatCannotBeUsedFailsAtOnceForAnOnlineInstaller) {
  for (const char* url : {"", "http://no.invalid/", "no-scheme/updates", "ftp://127.0.0.1/",
                          "http://", "http://[::1/", "http://127.0.0.1:99999/", "http://a b/"}) {
    SCOPED_TRACE(url);
    const auto [result, seconds] = start(onlineTail(url));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_LT(seconds, kAtOnce);
    EXPECT_EQ(countLine(result, "[JREDownload] Failed to download JRE version file"), 1);
    EXPECT_THAT(result.err, HasSubstr("Download failed"));
    machine_.expectNoRuntime();
  }
}

TEST_F(UpdateUrl, ThatSwitchesUpdatesOffIsNotAskedByAnOnlineInstallerEither) {
  ChildOptions options = machine_.options();
  options.environment["http_proxy"] = server_.url();
  EXPECT_EQ(start(onlineTail("http://no.invalid/"), options).result.exitStatus, 1);
  EXPECT_THAT(server_.targets(), ::testing::IsEmpty());
}

TEST_F(UpdateUrl, WhoseVersionFileStallsFailsAfterTwentySeconds) {
  server_.answer(kVersionPath, answerStalled("17\n", 1));
  const auto [result, seconds] = start(onlineTail(server_.url()), withFastClock());
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_GE(seconds, kTwentySecondsOfTheFastClock);
  EXPECT_EQ(countLine(result, "[JREDownload] Failed to download JRE version file"), 1);
  EXPECT_THAT(result.err, HasSubstr("not complete after 20 seconds"));
  machine_.expectNoRuntime();
}

TEST_F(UpdateUrl, WhoseArchiveStallsFailsAfterAMinute) {
  publishRuntime(server_, "17", packedScriptRuntime());
  server_.answer(archivePath("17"), answerStalled(packedScriptRuntime(), 100));
  const auto [result, seconds] = start(onlineTail(server_.url()), withFastClock());
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_GE(seconds, kMinuteOfTheFastClock);
  EXPECT_EQ(countLine(result, "[JREDownload] Failed to download JRE"), 1);
  machine_.expectNoRuntime();
  publishRuntime(server_, "17", packedScriptRuntime());
  machine_.expectGoodStart(onlineTail(server_.url()));
}

// More than a minute in all, less than a third of one between two pieces: slow, but not silent.
TEST_F(UpdateUrl, WhoseArchiveIsSlowerThanAMinuteIsWaitedFor) {
  publishRuntime(server_, "17", packedScriptRuntime());
  server_.answer(archivePath("17"),
                 answerSlowly(packedScriptRuntime(), 4, std::chrono::milliseconds(600)));
  const auto [result, seconds] = start(onlineTail(server_.url()), withFastClock());
  EXPECT_GE(seconds, kMinuteOfTheFastClock);
  expectInstalled(result);
}

}  // namespace
}  // namespace quillory::testing
