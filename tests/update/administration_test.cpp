#include "update/administration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "packager/writing/update_settings_writer.h"
#include "tests/support/ordinary_user.h"
#include "tests/update/machine.h"
#include "update/judgement.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using update::administeredInstallation;
using update::administratorsProgram;
using update::Command;
using update::Installation;
using update::openPlaceBelow;
using update::openPlaceOn;
using update::Phase;

constexpr uid_t kSomebody = 1234;

/// An installation for all users, as its administrator has made it, in a folder of the test's.
class Administration : public ::testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can make what is root's";
    settings_.keys = {"3003"};
    settings_.updateUrl = "https://app.example/demo";
    settings_.runtimeName = "JRE";
    makeUpdater("3");
  }

  std::string root() const { return fs::canonical(folder_.str()).string(); }
  std::string master() const { return root() + "/Library/Quillory-Demo"; }
  std::string updater(const std::string& version) const {
    return master() + "/Quillory-Quillory-" + version + "-complete";
  }
  std::string program(const std::string& version = "3") const {
    return updater(version) + "/quillory-update";
  }
  void makeUpdater(const std::string& version) const {
    writeFile(updater(version) + "/QuilloryLaunch", "launch");
    writeFile(program(version), "the program");
    writeFile(updater(version) + "/cacerts", "the trust store");
    writeFile(updater(version) + "/QuilloryUpdate", pack::updateSettingsBytes(settings_));
  }
  std::string whyNot(const std::string& path) const {
    std::string why;
    const bool isThere = administeredInstallation(path, why, root()).has_value();
    EXPECT_EQ(isThere, why.empty());
    return why;
  }
  Installation asAUserKnowsIt() const {
    Installation its;
    its.appName = "Demo";
    its.masterFolder = master();
    return its;
  }
  std::string refusal(const std::string& place) const {
    return place + " could have been changed by another user: it has no part in what an " +
           "administrator runs";
  }

  TempDir folder_;
  UpdateSettings settings_;
};

TEST_F(Administration, FindsThePlaceThatSomebodyElseCouldHaveChanged) {
  EXPECT_EQ(openPlaceOn(program(), root()), "");
  const std::string places[] = {root() + "/Library", master(), updater("3"), program()};
  for (const std::string& place : places) {
    SCOPED_TRACE(place);
    for (const mode_t mode : {0775, 0757, 01777}) {
      chmod(place.c_str(), mode);
      EXPECT_EQ(openPlaceOn(program(), root()), place);
    }
    chmod(place.c_str(), 0755);
    ASSERT_EQ(chown(place.c_str(), kSomebody, 0), 0);
    EXPECT_EQ(openPlaceOn(program(), root()), place);
    ASSERT_EQ(chown(place.c_str(), 0, 0), 0);
    fs::rename(place, place + " elsewhere");
    EXPECT_EQ(openPlaceOn(program(), root()), place) << "it is missing";
    fs::create_symlink(place + " elsewhere", place);
    EXPECT_EQ(openPlaceOn(program(), root()), place) << "it is a link";
    fs::remove(place);
    fs::rename(place + " elsewhere", place);
  }
  EXPECT_EQ(openPlaceOn(program(), root()), "");
  // With nothing that is trusted beforehand, the folder for temporary files is on the way.
  EXPECT_NE(openPlaceOn(program()), "");
  EXPECT_EQ(openPlaceOn("/usr/bin/env"), "");
}

TEST_F(Administration, FindsItBelowAFolder) {
  const std::string updates = master() + "/QYUpdates";
  EXPECT_EQ(openPlaceBelow(updates), "");
  writeFile(updates + "/downloads/file.part", "bytes");
  fs::create_symlink("/nowhere", updates + "/link");
  EXPECT_EQ(openPlaceBelow(updates), "");
  for (const std::string place : {"", "/downloads", "/downloads/file.part"}) {
    ASSERT_EQ(chown((updates + place).c_str(), kSomebody, 0), 0);
    EXPECT_EQ(openPlaceBelow(updates), updates + place);
    ASSERT_EQ(chown((updates + place).c_str(), 0, 0), 0);
    chmod((updates + place).c_str(), 0777);
    EXPECT_EQ(openPlaceBelow(updates), updates + place);
    chmod((updates + place).c_str(), 0755);
  }
  ASSERT_EQ(lchown((updates + "/link").c_str(), kSomebody, 0), 0);
  EXPECT_EQ(openPlaceBelow(updates), updates + "/link");
}

TEST_F(Administration, KnowsTheInstallationByItsPlaceAndItsSettings) {
  std::string why;
  const auto its = administeredInstallation(program(), why, root());
  ASSERT_TRUE(its) << why;
  EXPECT_EQ(its->appName, "Demo");
  EXPECT_EQ(its->masterFolder, master());
  EXPECT_EQ(its->ownFolder, master());
  EXPECT_EQ(its->updaterFolder, updater("3"));
  EXPECT_EQ(its->updateUrl, "https://app.example/demo/");
  EXPECT_EQ(its->jreName, "JRE");
  EXPECT_EQ(its->bundleKey, "") << "keys come from the settings alone";
  EXPECT_TRUE(its->isHardened);
  EXPECT_TRUE(its->isForAllUsers);
}

TEST_F(Administration, RefusesWhatAnotherUserCouldHaveWritten) {
  writeFile(master() + "/QYUpdates/state", "state");
  const std::string places[] = {root() + "/Library",
                                master(),
                                updater("3"),
                                program(),
                                updater("3") + "/QuilloryUpdate",
                                updater("3") + "/cacerts",
                                master() + "/QYUpdates",
                                master() + "/QYUpdates/state"};
  for (const std::string& place : places) {
    chmod(place.c_str(), 0777);
    EXPECT_EQ(whyNot(program()), refusal(place));
    chmod(place.c_str(), 0755);
    ASSERT_EQ(chown(place.c_str(), kSomebody, 0), 0);
    EXPECT_EQ(whyNot(program()), refusal(place));
    ASSERT_EQ(chown(place.c_str(), 0, 0), 0);
  }
  EXPECT_EQ(whyNot(program()), "");
}

TEST_F(Administration, RefusesSettingsThatSayTooLittle) {
  UpdateSettings forOneUser = settings_;
  forOneUser.updateUrl = "";
  writeFile(updater("3") + "/QuilloryUpdate", pack::updateSettingsBytes(forOneUser));
  EXPECT_THAT(whyNot(program()), HasSubstr("name no key, or no update URL"));
  UpdateSettings withoutKeys = settings_;
  withoutKeys.keys.clear();
  writeFile(updater("3") + "/QuilloryUpdate", pack::updateSettingsBytes(withoutKeys));
  EXPECT_THAT(whyNot(program()), HasSubstr("name no key, or no update URL"));
  fs::remove(updater("3") + "/QuilloryUpdate");
  EXPECT_THAT(whyNot(program()), HasSubstr("there are no settings"));
}

// Whose settings may trust a key that has been stolen since.
TEST_F(Administration, RefusesAnOlderUpdater) {
  makeUpdater("4");
  EXPECT_EQ(whyNot(program("3")), updater("3") + " is not that of the newest updater");
  EXPECT_EQ(whyNot(program("4")), "");
  EXPECT_EQ(administratorsProgram(asAUserKnowsIt(), root()).path, program("4"));
}

TEST_F(Administration, RefusesAPlaceThatIsNoInstallation) {
  const std::string elsewhere = root() + "/opt/tools/quillory-update";
  writeFile(elsewhere, "the program");
  EXPECT_EQ(whyNot(elsewhere), elsewhere + " does not lie in an installation");
  const std::string nameless = root() + "/Quillory-/folder/quillory-update";
  EXPECT_EQ(whyNot(nameless), nameless + " does not lie in an installation");
}

TEST_F(Administration, AsksForRightsForNoProgramThatSomebodyElseCouldHaveChanged) {
  EXPECT_EQ(administratorsProgram(asAUserKnowsIt(), root()).path, program());
  chmod(master().c_str(), 0777);
  const auto open = administratorsProgram(asAUserKnowsIt(), root());
  EXPECT_EQ(open.path, "");
  EXPECT_EQ(open.whyNot, refusal(master()));
  chmod(master().c_str(), 0755);
  fs::remove(program());
  EXPECT_EQ(administratorsProgram(asAUserKnowsIt(), root()).whyNot,
            "the newest updater has no quillory-update");
}

TEST(StandAlone, LeavesNothingOfTheOneWhoStartedIt) {
  EXPECT_EXIT(
      {
        setenv("JAVA_TOOL_OPTIONS", "-javaagent:/home/user/agent.jar", 1);
        setenv("PATH", "/home/user/bin", 1);
        setenv("https_proxy", "http://proxy.test:1/", 1);
        umask(0);
        update::standAlone();
        const std::string proxy = std::getenv("https_proxy");
        const bool isDone =
            std::getenv("JAVA_TOOL_OPTIONS") == nullptr && std::getenv("HOME") == nullptr &&
            std::string(std::getenv("PATH")) == "/usr/bin:/bin:/usr/sbin:/sbin" &&
            proxy == "http://proxy.test:1/" && fs::current_path() == "/" && umask(0) == 022;
        std::_Exit(isDone ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

/// Inside of what an ordinary user does.
class AsAdministratorAgain {
 public:
  AsAdministratorAgain() { EXPECT_EQ(seteuid(0), 0); }
  ~AsAdministratorAgain() { EXPECT_EQ(seteuid(user_), 0); }
  AsAdministratorAgain(const AsAdministratorAgain&) = delete;
  AsAdministratorAgain& operator=(const AsAdministratorAgain&) = delete;

 private:
  const uid_t user_ = geteuid();
};

/// A user whose installation is its administrator's.
class Elevated : public ::testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can be two users";
    machine_.extraProperties =
        property("qystat_install_type", "perm_all") + property("qydyna_hardened", "true");
    for (const std::string& folder : {machine_.master(), releases_.path()}) {
      chmod(folder.c_str(), 0755);
      chmod(fs::path(folder).parent_path().c_str(), 0755);
    }
    chmod(own_.str().c_str(), 0777);
    machine_.ownFolder = own_.str();
    users_ = machine_.installation();
    administrators_ = users_;
    administrators_.ownFolder = machine_.master();
  }
  void release(std::int64_t number, const std::string& version) {
    releases_.publish(ReleaseFolder::list(
        number, {releases_.add(kApplicationRole, "Demo", version, {{"app.jar", version}})}));
  }
  RunResult install(const std::function<int(const std::string& draw)>& elevate) {
    const AsOrdinaryUser somebody;
    machine_.elevate = elevate;
    return machine_.runOn(users_, Command::kInstall);
  }
  update::State usersState() const { return update::readState(own_ / "QYUpdates"); }

  ReleaseFolder releases_;
  Machine machine_{releases_};
  TempDir own_;
  Installation users_;
  Installation administrators_;
};

TEST_F(Elevated, IsDoneByTheRunWithTheAdministratorsRights) {
  release(2, "2");
  const RunResult result = install([this](const std::string& draw) {
    EXPECT_EQ(draw, usersState().draw) << "written before somebody is asked";
    const AsAdministratorAgain again;
    machine_.draw = draw;
    return machine_.runOn(administrators_, Command::kInstall).status;
  });
  EXPECT_EQ(result.status, update::kExitDone) << result.line("failed");
  EXPECT_EQ(machine_.fileOf("2", "app.jar"), "2");
  EXPECT_EQ(usersState().phase, Phase::kNone);
  EXPECT_EQ(usersState().offer.release, 0);
  EXPECT_EQ(usersState().previousVersion, "1");
  EXPECT_EQ(result.line("done"), "") << "the other run says so";
  EXPECT_NE(machine_.state().draw, usersState().draw);
}

// What it is offered to is decided by the user's draw: the administrator's could be another.
TEST_F(Elevated, GoesByTheDrawOfTheUserWhoHasBeenOfferedIt) {
  ReleaseList list =
      ReleaseFolder::list(2, {releases_.add(kApplicationRole, "Demo", "2", {{"app.jar", "2"}})});
  list.rollout = {.start = kIssued, .days = 0, .percent = 50};
  releases_.publish(list);
  const auto drawn = [](bool isIn) {
    for (int i = 0;; ++i) {
      std::string draw = std::to_string(i);
      draw.insert(0, 32 - draw.size(), '0');
      if (update::isDrawn(draw, "2", 5000) == isIn) return draw;
    }
  };
  machine_.draw = drawn(false);
  EXPECT_NE(machine_.runOn(administrators_, Command::kInstall).line("none"), "");
  machine_.draw = drawn(true);
  EXPECT_NE(machine_.runOn(administrators_, Command::kInstall).line("done"), "");
}

TEST_F(Elevated, SaysSoWhenTheRightsAreNotGiven) {
  release(2, "2");
  for (const int status : {-1, 64, 66, 69, 77}) {
    const RunResult result = install([status](const std::string&) { return status; });
    EXPECT_EQ(result.status, update::kExitNeedsAdministrator);
    EXPECT_EQ(result.line("failed"),
              "failed reason=the%20administrator%27s%20rights%20were%20not%20given retry=1");
    EXPECT_EQ(usersState().phase, Phase::kFailed);
    EXPECT_EQ(usersState().offer.version, "2");
  }
  EXPECT_THAT(machine_.versions(), ElementsAre("Quillory-Demo-1-complete"));
}

TEST_F(Elevated, HandsOnHowItHasEnded) {
  release(2, "2");
  EXPECT_EQ(install([](const std::string&) { return 1; }).status, update::kExitFailed);
  EXPECT_EQ(usersState().phase, Phase::kFailed);
  EXPECT_EQ(install([](const std::string&) { return 75; }).status, update::kExitBusy);
  EXPECT_EQ(usersState().phase, Phase::kAvailable);
  // Done, but nothing was: it is still offered.
  EXPECT_EQ(install([](const std::string&) { return 0; }).status, update::kExitDone);
  EXPECT_EQ(usersState().phase, Phase::kAvailable);
}

TEST_F(Elevated, AsksNobodyWhereNothingIsNewOrTheUserMayDoIt) {
  release(1, "1");
  const auto nobody = [](const std::string&) {
    ADD_FAILURE() << "somebody is asked";
    return 0;
  };
  EXPECT_EQ(install(nobody).status, update::kExitDone);
  release(2, "2");
  machine_.elevate = nobody;
  EXPECT_EQ(machine_.runOn(administrators_, Command::kInstall).status, update::kExitDone);
  EXPECT_EQ(machine_.fileOf("2", "app.jar"), "2");
}

}  // namespace
}  // namespace quillory::testing
