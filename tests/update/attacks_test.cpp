// What a server, or whoever stands in its place, may try: each attempt ends with what was installed
// before, and with the reason in a line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "formats/sha256.h"
#include "packager/writing/release_list_writer.h"
#include "tests/update/machine.h"

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using update::Command;
using update::percentEncoded;
using update::Phase;

class Attacks : public ::testing::Test {
 protected:
  ReleaseComponent app(const std::string& version,
                       const pack::SigningKey& key = testKey("working")) {
    return releases_.add(kApplicationRole, "Demo", version, {{"app.jar", "version " + version}},
                         key);
  }
  std::string listName() const { return releaseListName("Demo", kStandardChannel); }
  std::string listBytes() const { return readFile(releases_ / listName()); }
  void serve(const std::string& bytes) const { writeFile(releases_ / listName(), bytes); }

  void expectRefused(const std::string& reason, int status = update::kExitFailed) {
    const RunResult result = machine_.run(Command::kInstall);
    EXPECT_EQ(result.status, status);
    EXPECT_THAT(result.line("failed"), HasSubstr(percentEncoded(reason)));
    EXPECT_THAT(machine_.versions(), ElementsAre("Quillory-Demo-1-complete"));
    EXPECT_EQ(machine_.state().phase, Phase::kFailed);
  }
  void expectInstalled(const std::string& version) {
    const RunResult result = machine_.run(Command::kInstall);
    EXPECT_EQ(result.status, update::kExitDone) << result.line("failed");
    EXPECT_EQ(machine_.fileOf(version, "app.jar"), "version " + version);
  }

  ReleaseFolder releases_;
  Machine machine_{releases_};
};

TEST_F(Attacks, AListWithoutASignatureIsRefused) {
  releases_.publish(ReleaseFolder::list(2, {app("2")}));
  const std::string bytes = listBytes();
  serve(bytes.substr(0, bytes.find("qyArcSpBlock_")));
  expectRefused("sign");
}

TEST_F(Attacks, AListOfAnotherKeyIsRefused) {
  releases_.publish(ReleaseFolder::list(2, {app("2")}), {&testKey("strange")});
  expectRefused("sign");
}

TEST_F(Attacks, AListThatWasChangedAtAnyByteIsRefused) {
  releases_.publish(ReleaseFolder::list(2, {app("2")}));
  const std::string bytes = listBytes();
  for (std::size_t at = 0; at < bytes.size(); at += 37) {
    SCOPED_TRACE(at);
    std::string changed = bytes;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    // The digits of a signature may be written in two ways.
    serve(changed);
    const RunResult result = machine_.run(Command::kCheck);
    EXPECT_EQ(result.status, update::kExitFailed) << result.lines.back();
  }
}

TEST_F(Attacks, AListThatIsCutAnywhereIsRefused) {
  releases_.publish(ReleaseFolder::list(2, {app("2")}));
  const std::string bytes = listBytes();
  for (std::size_t length = 0; length < bytes.size(); length += 41) {
    serve(bytes.substr(0, length));
    EXPECT_EQ(machine_.run(Command::kCheck).status, update::kExitFailed) << length;
  }
}

TEST_F(Attacks, AListWithoutAnEndIsNotReadToItsEnd) {
  serve(std::string(3 * kMaxReleaseListBytes, 'x'));
  expectRefused("too long");
  EXPECT_LE(machine_.transport.sent(), static_cast<std::int64_t>(kMaxReleaseListBytes) + 1000);
}

TEST_F(Attacks, AnOldListIsRefusedOnceANewerOneWasSeen) {
  releases_.publish(ReleaseFolder::list(2, {app("2")}));
  const std::string old = listBytes();
  releases_.publish(ReleaseFolder::list(3, {app("1")}));
  EXPECT_EQ(machine_.run(Command::kCheck).status, update::kExitDone);
  serve(old);
  expectRefused("it is of release 2, and release 3 has been seen already");
}

TEST_F(Attacks, AnOldListOfTheSameNumberIsRefused) {
  ReleaseList list = ReleaseFolder::list(2, {app("1")});
  releases_.publish(list);
  const std::string old = listBytes();
  list.issued += kDay;
  releases_.publish(list);
  EXPECT_EQ(machine_.run(Command::kCheck).status, update::kExitDone);
  serve(old);
  expectRefused("it was issued before the one that has been seen already");
}

TEST_F(Attacks, WhatWasSeenIsRememberedWhateverVersionFoldersAreThere) {
  releases_.publish(ReleaseFolder::list(2, {app("2")}));
  const std::string old = listBytes();
  releases_.publish(ReleaseFolder::list(3, {app("3")}));
  expectInstalled("3");
  std::filesystem::remove_all(machine_ / "Quillory-Demo-3-complete");
  serve(old);
  expectRefused("it is of release 2, and release 3 has been seen already");
}

TEST_F(Attacks, TheListOfAnotherProductIsRefused) {
  ReleaseList list =
      ReleaseFolder::list(2, {releases_.add(kApplicationRole, "Other", "2", {{"app.jar", "x"}})});
  list.application = "Other";
  releases_.publish(list);
  serve(readFile(releases_ / releaseListName("Other", kStandardChannel)));
  expectRefused("it is of the application Other");
}

TEST_F(Attacks, TheListOfAnotherChannelIsRefused) {
  ReleaseList list = ReleaseFolder::list(2, {app("2")});
  list.channel = "beta";
  releases_.publish(list);
  serve(readFile(releases_ / releaseListName("Demo", "beta")));
  expectRefused("it is of the channel beta");
}

TEST_F(Attacks, TheListOfAnotherPlatformIsRefused) {
  ReleaseList list = ReleaseFolder::list(2, {app("2")});
  list.platform = "plan9";
  releases_.publish(list);
  expectRefused("it is for plan9");
}

// The signed list names the bytes of one archive, and the server has another one's.
TEST_F(Attacks, AGoodArchiveUnderAWrongNameIsRefused) {
  releases_.publish(ReleaseFolder::list(2, {app("2")}));
  const ReleaseComponent three = app("3");
  writeFile(releases_ / releaseArchiveName("Demo", "2"), readFile(releases_ / three.archive.name));
  expectRefused("the server has ");
}

// Whoever signs the list can be mistaken, too: the archive itself says what it is.
TEST_F(Attacks, AnArchiveThatIsNotWhatTheListCallsItIsRefused) {
  ReleaseComponent component = app("2");
  component.version = "3";
  releases_.publish(ReleaseFolder::list(2, {component}));
  expectRefused("it is Demo 2 (any), not Demo 3");
}

TEST_F(Attacks, AnArchiveThatAnotherKeyHasSignedIsRefused) {
  releases_.publish(ReleaseFolder::list(2, {app("2", testKey("strange"))}));
  expectRefused("its signature does not hold");
  EXPECT_EQ(machine_.state().stagedVersion, "");
}

TEST_F(Attacks, AnArchiveThatTheReserveKeyHasSignedIsTaken) {
  releases_.publish(ReleaseFolder::list(2, {app("2", testKey("reserve"))}));
  expectInstalled("2");
}

TEST_F(Attacks, AnArchiveThatUnpacksToMoreThanItShouldIsNotUnpackedToItsEnd) {
  const ReleaseComponent large =
      releases_.add(kApplicationRole, "Demo", "3", {{"app.jar", std::string(4'000'000, 'x')}});
  ReleaseComponent component = app("2");
  component.archive = large.archive;
  releases_.publish(ReleaseFolder::list(2, {component}));
  expectRefused("holds more than it should");
}

TEST_F(Attacks, AnArchiveThatUnpacksToAnotherOneIsRefused) {
  const ReleaseComponent three = app("3");
  ReleaseComponent component = app("2");
  component.archive = three.archive;
  releases_.publish(ReleaseFolder::list(2, {component}));
  expectRefused("holds another archive than it should");
}

TEST_F(Attacks, AnExpiredListFreezesNobodyAndIsTold) {
  releases_.publish(ReleaseFolder::list(2, {app("1")}));
  EXPECT_EQ(machine_.run(Command::kCheck).line("none"), "none newest=1");
  machineTime = kIssued + 91 * kDay;
  const RunResult result = machine_.run(Command::kCheck);
  EXPECT_EQ(result.status, update::kExitDone);
  EXPECT_EQ(result.line("frozen"), "frozen since=" + std::to_string(kIssued + 2));
  EXPECT_EQ(machine_.state().phase, Phase::kFrozen);
}

TEST_F(Attacks, AnExpiredListThatIsNewerThanWhatWasSeenIsTakenAllTheSame) {
  machineTime = kIssued + 91 * kDay;
  releases_.publish(ReleaseFolder::list(2, {app("2")}));
  expectInstalled("2");
}

TEST_F(Attacks, AReserveKeyIsEnoughWhenTheOtherOneIsLost) {
  releases_.publish(ReleaseFolder::list(2, {app("2", testKey("reserve"))}), {&testKey("reserve")});
  expectInstalled("2");
}

TEST_F(Attacks, KeysChangeWhenAnOldAndANewOneHaveSigned) {
  ReleaseList list = ReleaseFolder::list(2, {app("2")});
  list.nextKeys = {testKey("next").publicHex(), testKey("nextReserve").publicHex()};
  releases_.publish(list, {&testKey("working"), &testKey("next")});
  expectInstalled("2");
  EXPECT_EQ(machine_.state().keys, list.nextKeys);
  // From now on the old one counts no more.
  releases_.publish(ReleaseFolder::list(3, {app("3")}));
  EXPECT_EQ(machine_.run(Command::kInstall).status, update::kExitFailed);
  releases_.publish(ReleaseFolder::list(3, {app("3", testKey("next"))}), {&testKey("next")});
  expectInstalled("3");
}

TEST_F(Attacks, KeysDoNotChangeWhenTheOldOneAloneHasSigned) {
  ReleaseList list = ReleaseFolder::list(2, {app("2")});
  list.nextKeys = {testKey("next").publicHex()};
  releases_.publish(list, {&testKey("working")});
  machine_.run(Command::kCheck);
  EXPECT_THAT(machine_.state().keys, ::testing::IsEmpty());
}

TEST_F(Attacks, KeysDoNotChangeWhenTheNewOneAloneHasSigned) {
  ReleaseList list = ReleaseFolder::list(2, {app("2")});
  list.nextKeys = {testKey("next").publicHex()};
  releases_.publish(list, {&testKey("next")});
  expectRefused("sign");
  EXPECT_THAT(machine_.state().keys, ::testing::IsEmpty());
}

TEST_F(Attacks, AReleaseThatIsOnlyHalfThereIsTriedAgain) {
  const ReleaseComponent two = app("2");
  releases_.publish(ReleaseFolder::list(2, {two}));
  const std::string archive = readFile(releases_ / two.archive.name);
  std::filesystem::remove(releases_ / two.archive.name);
  expectRefused("the server answers with status 404");
  EXPECT_GT(machine_.state().nextCheck, machineTime);
  EXPECT_LT(machine_.state().nextCheck, machineTime + 100);
  writeFile(releases_ / two.archive.name, archive);
  expectInstalled("2");
}

TEST_F(Attacks, ASteppingStoneIsTheOneThatIsNamedAndNoOther) {
  ReleaseList stone = ReleaseFolder::list(2, {app("2")});
  releases_.publish(stone);
  const std::string name = keptReleaseListName("Demo", kStandardChannel, 2);
  ReleaseList list = ReleaseFolder::list(5, {app("5")});
  list.minimumFrom = 2;
  list.steppingStone = named(name, readFile(releases_ / name));
  releases_.publish(list);
  const std::string good = readFile(releases_ / name);
  ReleaseList other = ReleaseFolder::list(2, {app("3")});
  writeFile(releases_ / name,
            pack::releaseListBytes(other, {&testKey("working")}, pack::Salt::kRandom));
  EXPECT_EQ(machine_.run(Command::kInstall).status, update::kExitFailed);
  EXPECT_THAT(machine_.versions(), ElementsAre("Quillory-Demo-1-complete"));
  writeFile(releases_ / name, good);
  expectInstalled("2");
  expectInstalled("5");
}

TEST_F(Attacks, NothingInstallsWithoutASignatureWhateverTheBundleAllows) {
  machine_.settings.keys.clear();
  machine_.writeSettings(machine_.settings);
  machine_.extraProperties = property("qystat_qysig_public_key", "");
  releases_.publish(ReleaseFolder::list(2, {app("2")}));
  expectRefused("");
}

}  // namespace
}  // namespace quillory::testing
