// Files of the update URL that arrive whole, and are not what they should be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/online_failure_fixture.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;

/// Contents of a version file that lead to no runtime.
struct BadVersion {
  const char* name;
  std::string content;
  std::string error;
  friend void PrintTo(const BadVersion& test, std::ostream* out) { *out << test.name; }
};

class OnlineVersion : public OnlineFailure, public ::testing::WithParamInterface<BadVersion> {};

TEST_P(OnlineVersion, LeadsToNoRuntime) {
  server_.answer(kVersionPath, answerFile(GetParam().content));
  expectFailure(start(), GetParam().error);
  expectRecovery();
}

INSTANTIATE_TEST_SUITE_P(
    , OnlineVersion,
    ::testing::Values(
        BadVersion{"Empty", "", kArchiveFailed}, BadVersion{"OfNoArchive", "18", kArchiveFailed},
        BadVersion{"OnASecondLine", "\n17", kArchiveFailed},
        BadVersion{"OfHtml", "<!DOCTYPE html>\n<html><body>Welcome</body></html>\n",
                   kArchiveFailed},
        BadVersion{"OutsideTheFolder", "../../escaped",
                   "[JREDownload] JRE version '../../escaped' cannot be part of a folder name"}),
    NameOfCase{});

TEST_F(OnlineFailure, AtAVersionOfFiftyOneCharacters) {
  publishRuntime(server_, "17." + std::string(48, '0'), packedScriptRuntime());
  const ChildResult result = start();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("\n[JREDownload] Version invalid (too long)\n"));
  EXPECT_EQ(server_.requests().size(), 1U);
  machine_.expectNoRuntime();
  expectRecovery();
}

TEST_F(OnlineFailure, OfAnArchiveWithoutAVersion) {
  publishRuntime(server_, "", packedScriptRuntime());
  expectFailure(start(), kNoVersion);
  expectRecovery();
}

/// Archives that arrive whole, and hold no runtime that could be used.
struct BadArchive {
  const char* name;
  std::string (*archive)();
  std::string error;
  friend void PrintTo(const BadArchive& test, std::ostream* out) { *out << test.name; }
};

std::string withByteChanged(std::string bytes, std::size_t place) {
  bytes[place] = static_cast<char>(bytes[place] ^ 1);
  return bytes;
}

const std::string& signedRuntime() {
  static const std::string archive = signedArchive(scriptRuntimeContent());
  return archive;
}

class OnlineArchive : public OnlineFailure, public ::testing::WithParamInterface<BadArchive> {};

TEST_P(OnlineArchive, IsNotInstalled) {
  server_.answer(archivePath("17"), answerFile(GetParam().archive()));
  expectFailure(start(), GetParam().error);
  expectRecovery();
}

INSTANTIATE_TEST_SUITE_P(
    Compressed, OnlineArchive,
    ::testing::Values(
        BadArchive{"Empty", [] { return std::string(); }, kLzmaFailed},
        BadArchive{"Html", [] { return std::string("<html><body>Welcome</body></html>\n"); },
                   kLzmaFailed},
        BadArchive{"Garbage", [] { return std::string(100'000, '\xff'); }, kLzmaFailed},
        BadArchive{"ShorterThanItIs",
                   [] { return packedScriptRuntime().substr(0, packedScriptRuntime().size() - 9); },
                   kLzmaFailed},
        BadArchive{"WithoutARuntime", [] { return packedArchive(folderEntry("docs"), &testKey()); },
                   kNoRuntime}),
    NameOfCase{});

class OnlineSignature : public OnlineFailure, public ::testing::WithParamInterface<BadArchive> {};

TEST_P(OnlineSignature, MakesTheArchiveWorthless) {
  server_.answer(archivePath("17"), answerFile(GetParam().archive()));
  const ChildResult result = start();
  linesInOrder(result, {"[ExtractArchive] ERROR - unable to verify signature of hash of archive.",
                        "[ExtractArchive] Quillory will disregard this update."});
  expectFailure(result, GetParam().error);
  expectRecovery();
}

INSTANTIATE_TEST_SUITE_P(
    , OnlineSignature,
    ::testing::Values(
        BadArchive{"OfOtherContent",
                   [] {
                     const std::size_t place = signedRuntime().find("not looked into");
                     return lzma(withByteChanged(signedRuntime(), place));
                   },
                   kNoRuntime},
        BadArchive{
            "WithAByteChanged",
            [] { return lzma(withByteChanged(signedRuntime(), signedRuntime().size() - 9)); },
            kNoRuntime},
        BadArchive{"ByAnotherKey",
                   [] { return packedArchive(scriptRuntimeContent(), &otherKey()); }, kNoRuntime}),
    NameOfCase{});

TEST_F(OnlineFailure, OfASignedArchiveForAnInstallerWithoutAKey) {
  Tail tail = onlineTail(server_.url());
  tail.publicKey = "";
  expectFailure(machine_.start(tail), kNoRuntime);
  expectRecovery();
}

// Its content may yet come, as far as the reader knows.
TEST_F(OnlineFailure, OfAnArchiveWhoseContentEndsEarlyIsAWait) {
  const std::string& archive = signedRuntime();
  server_.answer(archivePath("17"), answerFile(lzma(archive.substr(0, archive.find("looked")))));
  {
    const auto child = startInBackground();
    ASSERT_TRUE(child->waitForOutput("[ExtractArchive] Waiting for the rest of")) << child->out();
    child->sendSignal(SIGKILL);
    EXPECT_EQ(child->finish().signal, SIGKILL);
  }
  EXPECT_FALSE(std::filesystem::exists(machine_.master() + "/Quillory-JRE-17-complete"));
  EXPECT_FALSE(std::filesystem::exists(machine_.master() + "/Quillory-JRE-17-complete.plugin"));
  expectRecovery();
}

}  // namespace
}  // namespace quillory::testing
