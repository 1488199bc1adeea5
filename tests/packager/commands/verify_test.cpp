#include "packager/commands/verify.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <nlohmann/json.hpp>

#include "packager/bytes/work_folder.h"
#include "tests/harness/child_process.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/packager/finished_bundle.h"

namespace quillory::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

using Verify = FinishedBundle;

TEST_F(Verify, FindsAFreshBundleGood) {
  const CommandResult result = pack({"verify", bundle_});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  EXPECT_EQ(result.out, "signed: " + bundle_ + ": GU.p2.l2: a client installs it\n" +
                            "signed: " + bundle_ + ": JRE.p2.l2: a client installs it\n" +
                            "signed: " + bundle_ + ": App.p2.l2: a client installs it\n");
  EXPECT_THAT(result.err, HasSubstr("good\n"));
}

TEST_F(Verify, SaysWhatNoSignatureCovers) {
  EXPECT_THAT(
      pack({"verify", bundle_}).err,
      HasSubstr(bundle_ + ": no signature of ours covers Info.plist, the launcher, elev_mac, "
                          "the parameters, the tail's records, tools and pictures; "
                          "--strict compares what can be compared\n"));
  const auto document = nlohmann::json::parse(pack({"verify", "--json", bundle_, tail()}).out);
  EXPECT_EQ(document["uncovered"].size(), 1u);
  EXPECT_EQ(document["uncovered"][bundle_][1], "the launcher");
}

TEST_F(Verify, DoesNotTakeAFullDiskForABrokenArchive) {
  const ChildResult result =
      runChild({"sh", "-c", "trap '' XFSZ; ulimit -f 1; exec \"$@\"", "sh", QUILLORY_PACK, "verify",
                "--key", Project::key(), release("Quillory-1")});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err,
              AllOf(HasSubstr("error: the archive cannot be put here to be looked at: "),
                    HasSubstr("set TMPDIR to another folder")));
}

TEST_F(Verify, ReadsNoDeviceWithoutAnEnd) {
  for (const char* command : {"verify", "inspect"}) {
    const CommandResult result = pack({command, "/dev/zero"});
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_THAT(result.err,
                HasSubstr("/dev/zero: error: is a folder, a device or a pipe, and no file"));
  }
}

TEST_F(Verify, ChecksArchivesWithAKeyAndSaysWhenThereIsNone) {
  EXPECT_THAT(pack({"verify", "--key", Project::key(), release("Hello-3")}).out,
              HasSubstr("signed: "));
  const CommandResult without = pack({"verify", release("Hello-3")});
  EXPECT_EQ(without.status, 0);
  EXPECT_THAT(without.out, HasSubstr("signed, not checked"));
  EXPECT_EQ(without.err, "structure good; signatures not checked: --key checks them\n");
  const auto unchecked =
      nlohmann::json::parse(pack({"verify", "--json", release("Hello-3"), bundle_}).out);
  EXPECT_EQ(unchecked["signature"], "not checked");
  EXPECT_EQ(unchecked["structure"], "good");
  EXPECT_TRUE(unchecked["good"].is_null());
  const auto checked = nlohmann::json::parse(
      pack({"verify", "--json", "--key", Project::key(), release("Hello-3"), bundle_}).out);
  EXPECT_EQ(checked["signature"], "checked");
  EXPECT_EQ(checked["good"], true);
  const auto nothing = nlohmann::json::parse(pack({"verify", "--json", bundle_ + "/no"}).out);
  EXPECT_EQ(nothing["signature"], "not checked");
  EXPECT_EQ(nothing["good"], false);
}

TEST_F(Verify, LooksAtThePathsBehindOneThatItDoesNotKnow) {
  const CommandResult result =
      pack({"verify", project_ / "missing", project_ / "hello.jar", bundle_});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, AllOf(HasSubstr(project_ / "missing" + ": error: "),
                                HasSubstr(project_ / "hello.jar" +
                                          ": error: is neither a bundle nor an archive"),
                                HasSubstr("NOT good\n")));
  EXPECT_THAT(result.out, HasSubstr("signed: " + bundle_ + ": App.p2.l2"));
  const CommandResult noKey = pack({"verify", "--key", project_ / "none.pem", bundle_, tail()});
  EXPECT_EQ(noKey.status, 1);
  EXPECT_EQ(noKey.out, "");
}

TEST_F(Verify, FindsAChangedArchiveBroken) {
  const TempDir dir;
  ASSERT_EQ(
      runChild({"sh", "-c",
                "xz --format=lzma -dc '" + release("Hello-3") + "' > '" + (dir / "a.p2") + "'"})
          .exitStatus,
      0);
  EXPECT_EQ(pack({"verify", "--key", Project::key(), dir / "a.p2"}).status, 0);
  patch(dir / "a.p2", "com.example", "com.exbmple");
  const CommandResult result = pack({"verify", "--key", Project::key(), dir / "a.p2"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("BROKEN: " + (dir / "a.p2") +
                                    ": a client deletes everything that it extracted from it"));
}

TEST_F(Verify, FindsABundleBrokenWhoseKeyOrArchiveWasExchanged) {
  const std::string other = project_ / "other.pem";
  ASSERT_EQ(runChild({"openssl", "genrsa", "-out", other, "2048"}).exitStatus, 0);
  EXPECT_EQ(pack({"verify", "--key", other, bundle_}).status, 1);
  EXPECT_THAT(pack({"verify", "--key", other, bundle_}).err, HasSubstr("[other-key]"));
  EXPECT_EQ(pack({"verify", "--key", Project::key(), bundle_}).status, 0);
}

TEST_F(Verify, AcceptsUnsignedArchivesOnlyWhereNoKeyIsKnown) {
  const TempDir dir;
  writeFile(dir / "a.p2", pageExample("formats/archive.md", 1));
  const CommandResult result = pack({"verify", dir / "a.p2"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("it is not signed, and a client installs it all the same"));
  EXPECT_EQ(pack({"verify", "--key", Project::key(), dir / "a.p2"}).status, 1);
}

TEST_F(Verify, FindsASignatureAtTheWrongPlaceBroken) {
  const TempDir dir;
  writeFile(dir / "a.p2", pageExample("formats/archive.md", 2));
  patch(dir / "a.p2",
        std::string("1\0"
                    "29\0",
                    5),
        std::string("1\0"
                    "28\0",
                    5));
  const CommandResult result = pack({"verify", dir / "a.p2"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("[signature-place]"));
}

TEST_F(Verify, GoesOnBehindAnArchiveThatCannotBeUnpacked) {
  std::string bytes = readFile(tail());
  const std::size_t content = bytes.find(std::string("JRE.p2.l2\0", 10));
  bytes[content + 200] = static_cast<char>(bytes[content + 200] ^ 0x55);
  writeFile(tail(), bytes);
  const CommandResult result = pack({"verify", bundle_});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, AllOf(HasSubstr("signed: " + bundle_ + ": GU.p2.l2"),
                                HasSubstr("BROKEN: " + bundle_ + ": JRE.p2.l2"),
                                HasSubstr("signed: " + bundle_ + ": App.p2.l2")));
  EXPECT_EQ(pack({"doctor", bundle_}).status, 1);
}

TEST_F(Verify, FindsDamagedFilesNotGoodAndNothingWorse) {
  const std::string bytes = readFile(release("Quillory-1"));
  for (std::size_t length = 0; length < bytes.size(); length += 997) {
    writeFile(project_ / "cut.p2.l2", bytes.substr(0, length));
    EXPECT_EQ(pack({"verify", project_ / "cut.p2.l2"}).status, 1) << length;
  }
  EXPECT_EQ(pack({"verify", project_ / "hello.jar"}).status, 1);
  EXPECT_EQ(pack({"verify", project_ / "missing"}).status, 1);
}

TEST_F(Verify, StopsBeforeTheNextBlockWhenItIsInterrupted) {
  using namespace quillory::pack;
  const PublicKey key = PublicKey::load(Project::key());
  const PlainArchive archive(wholeFile(release("Hello-3")), true);
  Findings findings;
  EXPECT_EQ(verifyArchiveFile(archive, "a", &key, findings).trust, Trust::kVerified);
  const auto interrupted = [&] {
    noticeInterruptions();
    std::raise(SIGINT);
    try {
      verifyArchiveFile(archive, "a", &key, findings);
    } catch (const PackError& e) {
      std::cerr << e.finding().what << '\n';
      std::_Exit(7);
    }
  };
  EXPECT_EXIT(interrupted(), ::testing::ExitedWithCode(7), "interrupted");
}

TEST_F(Verify, AsTheDoctorReportsTheArchivesThatAreMissing) {
  writeFile(tail(), records({"App", "3", "17", "1", "", "", "", "", "", "", ""}));
  for (const char* command : {"verify", "doctor"}) {
    SCOPED_TRACE(command);
    const CommandResult result = pack({command, bundle_});
    EXPECT_EQ(result.status, 1);
    std::size_t last = 0;
    for (const std::string part : {"updater", "runtime", "application"}) {
      const std::size_t at = result.err.find("the tail has a version of the " + part +
                                             " and no archive at its place [missing-entry]");
      ASSERT_NE(at, std::string::npos) << part << '\n' << result.err;
      EXPECT_GE(at, last) << "in the order of the tail";
      last = at;
    }
  }
}

using quillory::pack::Trust;
using quillory::pack::VerifyResult;

VerifyResult resultOf(std::initializer_list<Trust> verdicts,
                      const quillory::pack::Findings& findings = {}) {
  VerifyResult result;
  for (const Trust trust : verdicts) {
    result.verdicts.push_back({"archive", trust, ""});
  }
  result.findings = findings;
  return result;
}

TEST(VerifyResultGood, TakesUnsignedArchivesOnlyAmongThemselves) {
  static constexpr Trust kSigned = Trust::kVerified, kNot = Trust::kUnsigned,
                         kKeyless = Trust::kUnchecked, kBroken = Trust::kBroken;
  const struct {
    std::initializer_list<Trust> verdicts;
    bool good;
    bool goodWithKey;
  } cases[] = {{{}, true, true},
               {{kSigned}, true, true},
               {{kSigned, kSigned}, true, true},
               {{kKeyless}, true, true},
               {{kNot}, true, false},
               {{kNot, kNot}, true, false},
               {{kSigned, kNot}, false, false},
               {{kNot, kSigned}, false, false},
               {{kKeyless, kNot}, false, false},
               {{kNot, kNot, kKeyless}, false, false},
               {{kBroken}, false, false},
               {{kSigned, kBroken}, false, false},
               {{kNot, kBroken}, false, false}};
  for (const auto& one : cases) {
    SCOPED_TRACE(::testing::PrintToString(one.verdicts.size()));
    EXPECT_EQ(resultOf(one.verdicts).good(false), one.good);
    EXPECT_EQ(resultOf(one.verdicts).good(true), one.goodWithKey);
  }
}

TEST(VerifyResultGood, IsNotWithAnErrorWhateverTheVerdicts) {
  using quillory::pack::Severity;
  const quillory::pack::Finding warning{Severity::kWarning, "", "", {}, ""};
  const quillory::pack::Finding error{Severity::kError, "", "", {}, ""};
  EXPECT_TRUE(resultOf({Trust::kVerified}, {warning}).good(true));
  EXPECT_FALSE(resultOf({Trust::kVerified}, {warning, error}).good(true));
}

// A tail without a key: an updater and an application, each in the archive that is given.
std::string tailWith(const std::string& updater, const std::string& application) {
  const auto entry = [](const std::string& name, const std::string& bytes) {
    return records({"0", name, std::to_string(bytes.size())}) + bytes;
  };
  return records({"Hello", "3", "", "1", "", "", "", "", "", "", ""}) + entry("lzma64", "tool") +
         entry("nativesplash.png", "") + entry("GU.p2", updater) + entry("cacerts", "") +
         entry("", "") + entry("App.p2", application) + entry("", "");
}

TEST(VerifyPath, FindsAnUnsignedArchiveBesideASignedOneNotGood) {
  const TempDir dir;
  const std::string plain = pageExample("formats/archive.md", 1);
  const std::string withSignature = pageExample("formats/archive.md", 2);
  const auto isGood = [&](const std::string& updater, const std::string& application) {
    writeFile(dir / "Tail", tailWith(updater, application));
    const VerifyResult result = quillory::pack::verifyPath(dir / "Tail", "");
    EXPECT_EQ(result.verdicts.size(), 2u);
    return result.good(false);
  };
  EXPECT_TRUE(isGood(plain, plain));
  EXPECT_TRUE(isGood(withSignature, withSignature));
  EXPECT_FALSE(isGood(withSignature, plain));
  EXPECT_FALSE(isGood(plain, withSignature));
}

}  // namespace
}  // namespace quillory::testing
