// What other users can reach while, and after, the administrator installs for all of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/e2e/elevation_fixture.h"
#include "tests/harness/records.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr uid_t kAnother = 1234;
constexpr char kRecords[] = "/records";

std::string identity(const std::string& component, const std::string& version) {
  return emptyEntry("qyArcSpBlock_Component1;" + component + ";" + version + ";any");
}

/// A runtime whose java does `whenPrepared` while the administrator's rights are at work, and keeps
/// its own path and its arguments in /records/started when it is to run the application.
std::string runtimeContent(const std::string& whenPrepared) {
  return folderEntry("Contents") +
         fileEntry("Contents/Home/bin/java",
                   "#!/bin/sh\n"
                   "if [ \"$1\" = -Xshare:dump ]; then\n" +
                       whenPrepared +
                       "\nexit 0\nfi\n"
                       "for argument in \"$0\" \"$@\"; do echo \"$argument\"; done "
                       ">/records/starting\n"
                       "mv /records/starting /records/started\n") +
         fileEntry("Contents/Home/lib/rt.jar", "not looked into");
}

Tail tailWith(const std::string& java, const std::string& appVersion = "3") {
  Tail tail = forAllUsers();
  tail.appVersion = appVersion;
  const std::string updater = identity("Quillory", "1") +
                              fileEntry("QuilloryLaunch", launchFileBytes()) +
                              fileEntry("report.jar", readFile(QUILLORY_REPORT_JAR));
  tail.entries =
      fileEntry("lzma64", readFile(lzma64UnderTest())) +
      fileEntry("nativesplash.png", readFile(QUILLORY_TEST_PICTURE)) + emptyEntry("cacerts") +
      emptyEntry("verpatch.exe") + fileEntry("GU.p2.l2", packedArchive(updater, &testKey())) +
      fileEntry("JRE.p2.l2",
                packedArchive(identity("JRE", "17") + runtimeContent(java), &testKey())) +
      applicationEntries(identity("Demo", appVersion) + fileEntry("hello.txt", "hello\n"));
  return tail;
}

class ElevationModes : public Elevation {
 protected:
  void SetUp() override {
    Elevation::SetUp();
    if (IsSkipped()) return;
    if (!hasSudo()) GTEST_SKIP() << "needs sudo";
    allowInstallation();
  }

  void make(const Tail& tail, bool isHardened) {
    fs::remove_all(*root_ / "case");
    Parameters parameters{{"jre_name", "JRE"}};
    if (isHardened) parameters.emplace_back("hardened", "true");
    bundle_.emplace(*root_ / "case", tail, parameters);
    useRealTool();
  }

  std::string inMaster(const std::string& name) const { return at(kMaster) + '/' + name; }

  std::vector<std::string> started() const {
    const std::string path = at(kRecords) + "/started";
    if (!eventually([&] { return fs::exists(path); })) return {};
    std::vector<std::string> lines;
    std::istringstream text(readFile(path));
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    fs::remove(path);
    return lines;
  }

  /// What others may write to, or somebody else owns.
  std::vector<std::string> inReachOfOthers(const std::string& folder) const {
    std::vector<std::string> found;
    const auto look = [&found](const fs::path& path) {
      struct stat there {};
      if (lstat(path.c_str(), &there) == 0 && !S_ISLNK(there.st_mode) &&
          (there.st_uid != 0 || (there.st_mode & 022) != 0))
        found.push_back(path);
    };
    look(folder);
    for (const auto& entry : fs::recursive_directory_iterator(folder)) look(entry.path());
    return found;
  }
};

TEST_F(ElevationModes, LetNobodyExchangeWhatTheAdministratorRuns) {
  make(tailWith("stat -c '%a %u' '" + std::string(kMaster) + "' >/records/modes\n" +
                "for folder in '" + kMaster +
                "'/Quillory*; do stat -c '%a %u %n' \"$folder\"; "
                "done | sed 's,/.*/,,;s/[0-9]*-[0-9]*-app/S-app/' >>/records/modes"),
       false);
  const ChildResult result = start();
  EXPECT_EQ(prompts(), 1) << result.out;
  EXPECT_EQ(readFile(at("/records/modes")),
            "755 0\n"
            "700 0 Quillory-Quillory-1-complete\n"
            "700 0 QuilloryTemp-S-app\n");
  EXPECT_THAT(started(), Not(IsEmpty()));
}

TEST_F(ElevationModes, AreThoseOfEveryInstallationAfterwards) {
  make(tailWith(""), false);
  start();
  EXPECT_THAT(started(), Not(IsEmpty()));
  for (const char* folder :
       {"", "logs", "QYAppsSharedConfig", "Quillory-Quillory-1-complete",
        "Quillory-Demo-3-complete", "Quillory-JRE-17-complete", "Quillory-JRE-17-complete.plugin"})
    EXPECT_EQ(modeOf(inMaster(folder)), 0777U) << folder;
}

TEST_F(ElevationModes, AreMendedByTheNextStartWhenTheAdministratorsRunWasKilled) {
  make(tailWith("kill -9 $PPID"), false);
  start();
  EXPECT_EQ(modeOf(at(kMaster)), 0755U);
  make(tailWith(""), false);
  const ChildResult second = start();
  EXPECT_EQ(second.exitStatus, 0) << second.out;
  EXPECT_THAT(started(), Not(IsEmpty()));
  EXPECT_EQ(modeOf(at(kMaster)), 0777U);
  EXPECT_EQ(modeOf(inMaster("Quillory-Quillory-1-complete")), 0777U);
}

TEST_F(ElevationModes, NeedAMasterFolderOfTheAdministrator) {
  make(tailWith("touch /records/was-run"), false);
  fs::create_directories(at(kMaster));
  ASSERT_EQ(chown(at(kMaster).c_str(), kAnother, kAnother), 0);
  const ChildResult result = start();
  EXPECT_EQ(countLine(result, "[SUDO] The master folder " + std::string(kMaster) +
                                  " is a link, or belongs to another user. Giving up."),
            1);
  EXPECT_FALSE(fs::exists(at("/records/was-run")));
}

class HardenedForAll : public ElevationModes {
 protected:
  std::string own(const std::string& name) const {
    return at(std::string(PrivateRoot::kHome) + kSupport + "/Quillory-Demo/" + name);
  }
};

TEST_F(HardenedForAll, IsWrittenByTheAdministratorAlone) {
  make(tailWith(""), true);
  const ChildResult result = start({"one"});
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  const std::vector<std::string> java = started();
  ASSERT_FALSE(java.empty()) << result.out;
  EXPECT_EQ(java[0], std::string(kMaster) + "/Quillory-JRE-17-complete/bin/report");
  EXPECT_EQ(java.back(), "one");
  EXPECT_THAT(inReachOfOthers(at("/Library")), IsEmpty());
  EXPECT_EQ(modeOf(inMaster("Quillory-Demo-3-complete")), 0755U);
}

TEST_F(HardenedForAll, HasWhatAStartWritesInTheUsersOwnFolder) {
  make(tailWith(""), true);
  start();
  const std::vector<std::string> java = started();
  const auto properties = std::find_if(java.begin(), java.end(), [](const std::string& argument) {
    return argument.find("/QYLaunchProperties-") != argument.npos;
  });
  ASSERT_NE(properties, java.end());
  EXPECT_TRUE(properties->starts_with(std::string(PrivateRoot::kHome) + kSupport)) << *properties;
  EXPECT_FALSE(fs::is_empty(own("logs")));
  EXPECT_EQ(modeOf(own("logs")), 0755U);
  EXPECT_EQ(ownerOf(own("")), PrivateRoot::kUser);
}

TEST_F(HardenedForAll, NeedsNoSecondPrompt) {
  make(tailWith(""), true);
  start();
  EXPECT_THAT(started(), Not(IsEmpty()));
  const ChildResult second = start({"again"});
  EXPECT_EQ(second.exitStatus, 0) << second.out;
  EXPECT_EQ(prompts(), 1);
  const std::vector<std::string> java = started();
  ASSERT_FALSE(java.empty());
  EXPECT_EQ(java.back(), "again");
}

TEST_F(HardenedForAll, UsesNothingOfAnInstallationThatWasOpen) {
  make(tailWith(""), false);
  start();
  EXPECT_THAT(started(), Not(IsEmpty()));
  // What any user could do to it.
  writeFile(inMaster("Quillory-JRE-17-complete/bin/java"), "#!/bin/sh\ntouch /records/was-run\n");
  writeFile(inMaster("Quillory-Quillory-999-complete/QuilloryLaunch"), launchFileBytes());
  ASSERT_EQ(chown(inMaster("Quillory-Quillory-999-complete").c_str(), kAnother, kAnother), 0);
  make(tailWith(""), true);
  const ChildResult result = start({"hardened"});
  EXPECT_EQ(prompts(), 2) << result.out;
  const std::vector<std::string> java = started();
  ASSERT_FALSE(java.empty()) << result.out;
  EXPECT_EQ(java.back(), "hardened");
  EXPECT_FALSE(fs::exists(at("/records/was-run")));
  for (const char* folder : {"", "Quillory-Quillory-1-complete", "Quillory-Demo-3-complete",
                             "Quillory-JRE-17-complete", "Quillory-JRE-17-complete.plugin"})
    EXPECT_EQ(modeOf(inMaster(folder)), 0755U) << folder;
}

TEST_F(HardenedForAll, TakesNoOptionsThatAnotherUserRemembered) {
  make(tailWith(""), true);
  start();
  started();
  const std::string options = records({"1", "-XX:OnOutOfMemoryError=/records/planted"});
  writeFile(inMaster("QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete"), options);
  writeFile(own("QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete"), options);
  ASSERT_EQ(chmod(own("QYApps").c_str(), 0777), 0);
  const ChildResult result = start();
  EXPECT_THAT(started(), Not(::testing::Contains(HasSubstr("planted")))) << result.out;
  // The user's own ones count, where nobody else can write them.
  ASSERT_EQ(chmod(own("QYApps").c_str(), 0755), 0);
  ASSERT_EQ(chown(own("QYApps").c_str(), PrivateRoot::kUser, PrivateRoot::kUser), 0);
  start();
  EXPECT_THAT(started(), ::testing::Contains(HasSubstr("planted")));
}

TEST_F(HardenedForAll, IsNotBlockedByNamesInTheTemporaryFolder) {
  make(tailWith(""), true);
  for (const char* name : {"/tmp/lzma64", "/tmp/nativesplash.png"}) {
    writeFile(at(name), "another user's");
    ASSERT_EQ(chown(at(name).c_str(), kAnother, kAnother), 0);
  }
  const ChildResult result = start();
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_THAT(started(), Not(IsEmpty()));
  EXPECT_EQ(readFile(at("/tmp/nativesplash.png")), "another user's");
  for (const std::string& name : namesIn(at("/tmp")))
    EXPECT_FALSE(name.starts_with("Quillory-")) << "left behind: " << name;
}

}  // namespace
}  // namespace quillory::testing
