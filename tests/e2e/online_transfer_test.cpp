// Files of the update URL that do not arrive, or not whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/online_failure_fixture.h"

namespace quillory::testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

/// A file that does not arrive, or not whole.
struct BadTransfer {
  const char* name;
  HttpAnswer (*answer)(const std::string& body);
  friend void PrintTo(const BadTransfer& test, std::ostream* out) { *out << test.name; }
};

class OnlineTransfer : public OnlineFailure, public ::testing::WithParamInterface<BadTransfer> {};

TEST_P(OnlineTransfer, OfTheVersionFileFails) {
  server_.answer(kVersionPath, GetParam().answer("17\n"));
  expectFailure(start(), kVersionFailed);
  EXPECT_FALSE(std::filesystem::exists(versionFile()));
  expectRecovery();
}

TEST_P(OnlineTransfer, OfTheArchiveFails) {
  server_.answer(archivePath("17"), GetParam().answer(packedScriptRuntime()));
  expectFailure(start(), kArchiveFailed);
  expectRecovery();
}

INSTANTIATE_TEST_SUITE_P(
    , OnlineTransfer,
    ::testing::Values(
        BadTransfer{"WithStatus404", [](const std::string&) { return answerError(404); }},
        BadTransfer{"WithStatus500", [](const std::string&) { return answerError(500); }},
        BadTransfer{"WithoutAnAnswer", [](const std::string&) { return answerNothing(); }},
        BadTransfer{
            "ShorterThanAnnounced",
            [](const std::string& body) { return answerWithLength(body, body.size() + 1); }},
        BadTransfer{"CutInTheMiddle",
                    [](const std::string& body) { return answerReset(body, body.size() / 2); }},
        BadTransfer{"CutBeforeTheLastChunk",
                    [](const std::string& body) { return answerChunked({body}, true); }},
        BadTransfer{"SentInCircles", [](const std::string&) { return answerRedirect("?again"); }},
        BadTransfer{"SentToNobody",
                    [](const std::string&) {
                      return answerRedirect("http://127.0.0.1:" + std::to_string(unusedPort()));
                    }},
        BadTransfer{"SentToAFileOfThisMachine",
                    [](const std::string&) { return answerRedirect("file:///etc/hostname"); }}),
    NameOfCase{});

TEST_F(OnlineFailure, WhenTheConnectionIsRefused) {
  const std::string nobody = "http://127.0.0.1:" + std::to_string(unusedPort()) + "/";
  expectFailure(machine_.start(onlineTail(nobody)), kVersionFailed);
  expectRecovery();
}

TEST_F(OnlineFailure, WhenTheCertificateIsNotTrusted) {
  const std::string port = std::to_string(unusedPort());
  const std::string key = machine_.path("key.pem");
  const std::string certificate = machine_.path("certificate.pem");
  runChild({"openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=127.0.0.1",
            "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate});
  BackgroundChild server({"openssl", "s_server", "-accept", "127.0.0.1:" + port, "-key", key,
                          "-cert", certificate, "-www"});
  ASSERT_TRUE(server.waitForOutput("ACCEPT")) << server.err();
  const ChildResult result = machine_.start(onlineTail("https://127.0.0.1:" + port + "/"));
  expectFailure(result, kVersionFailed);
  EXPECT_THAT(result.err, HasSubstr("self-signed certificate"));
  expectRecovery();
}

TEST_F(OnlineFailure, OfAVersionFileWithoutAnEndCanBeEndedByTheUser) {
  HttpAnswer endless = answerWithoutLength("17 ");
  endless.bodyCount = 1'000'000;
  endless.pause = std::chrono::milliseconds(10);
  server_.answer(kVersionPath, endless);
  {
    const auto child = startInBackground();
    ASSERT_TRUE(child->waitForOutput("Bytes received - 6")) << child->err();
    child->sendSignal(SIGTERM);
    EXPECT_EQ(child->finish().signal, SIGTERM);
  }
  machine_.expectNoRuntime();
  EXPECT_FALSE(std::filesystem::exists(versionFile()));
  expectRecovery();
}

TEST_F(OnlineFailure, OfAVersionFileThatIsFarTooLong) {
  HttpAnswer endless = answerWithoutLength(std::string(60'000, ' '));
  endless.bodyCount = 1'000'000;
  server_.answer(kVersionPath, endless);
  const ChildResult result = start();
  expectFailure(result, kVersionFailed);
  EXPECT_THAT(result.out, HasSubstr("[Download] Nothing came: more than 65536 bytes (" +
                                    server_.url(kVersionPath) + "?time="));
  EXPECT_THAT(namesIn(machine_.master() + "/Quillory-Quillory-1-complete"),
              Not(Contains(HasSubstr(".part"))));
  expectRecovery();
}

TEST_F(OnlineFailure, OfAnArchiveWithoutAnEndLeavesNoFileThatLooksWhole) {
  HttpAnswer endless = answerWithoutLength(std::string(1000, '\0'));
  endless.bodyCount = 1'000'000;
  endless.pause = std::chrono::milliseconds(10);
  server_.answer(archivePath("17"), endless);
  {
    const auto child = startInBackground();
    ASSERT_TRUE(child->waitForOutput("Bytes received - 2000")) << child->err();
    child->sendSignal(SIGKILL);
    EXPECT_EQ(child->finish().signal, SIGKILL);
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(machine_.master()))
    EXPECT_NE(entry.path().filename(), "JREArchive.p2.l2");
  expectRecovery();
}

}  // namespace
}  // namespace quillory::testing
