// Whole updates against a folder of releases: what is installed afterwards, and what was asked for.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "install/installation_lock.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/records.h"
#include "tests/support/ordinary_user.h"
#include "tests/update/machine.h"
#include "update/cancel.h"
#include "update/metered.h"
#include "update/plan.h"
#include "update/update_lock.h"

namespace quillory::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using update::Command;
using update::Phase;

class Install : public ::testing::Test {
 protected:
  ~Install() override { update::isCancelled = false; }

  ReleaseComponent app(const std::string& version) {
    return releases_.add(kApplicationRole, "Demo", version,
                         {{"lib/", ""}, {"app.jar", "version " + version}, {"lib/a", "a"}});
  }
  void release(std::int64_t number, const std::string& version) {
    releases_.publish(ReleaseFolder::list(number, {app(version)}));
  }

  // Of 50,000 bytes that no compression makes fewer.
  ReleaseComponent noisyApp(const std::string& version) {
    std::string noise;
    for (unsigned i = 1; noise.size() < 50000; i = i * 1103515245 + 12345)
      noise += static_cast<char>(i >> 16);
    return releases_.add(kApplicationRole, "Demo", version, {{"app.jar", noise}});
  }

  ReleaseFolder releases_;
};

TEST_F(Install, PutsTheNewVersionBesideTheOldOne) {
  release(2, "2");
  Machine machine(releases_);
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_EQ(result.status, update::kExitDone);
  EXPECT_EQ(result.line("done"), "done version=2 release=2");
  EXPECT_THAT(machine.versions(),
              ElementsAre("Quillory-Demo-1-complete", "Quillory-Demo-2-complete"));
  EXPECT_EQ(machine.fileOf("2", "app.jar"), "version 2");
  EXPECT_EQ(machine.fileOf("2", "lib/a"), "a");
  EXPECT_EQ(machine.fileOf("1", "app.jar"), "version 1");
  EXPECT_EQ(machine.state().previousVersion, "1");
  EXPECT_EQ(machine.state().phase, Phase::kNone);
}

TEST_F(Install, WritesDownWhichArchiveItCameFrom) {
  const ReleaseComponent two = app("2");
  releases_.publish(ReleaseFolder::list(2, {two}));
  Machine machine(releases_);
  machine.run(Command::kInstall);
  EXPECT_EQ(machine.fileOf("2", "QuilloryArchive"), two.plainSha256 + '\n');
}

TEST_F(Install, LeavesNothingOnItsWay) {
  release(2, "2");
  Machine machine(releases_);
  machine.run(Command::kInstall);
  EXPECT_TRUE(std::filesystem::is_empty(machine / "QYUpdates/downloads"));
  EXPECT_TRUE(std::filesystem::is_empty(machine / "QYUpdates/staging"));
}

TEST_F(Install, GoesFromReleaseToReleaseAndStraightToTheNewest) {
  Machine walker(releases_);
  release(2, "2");
  walker.run(Command::kInstall);
  release(3, "3");
  EXPECT_EQ(walker.run(Command::kInstall).line("done"), "done version=3 release=3");
  Machine jumper(releases_);
  EXPECT_EQ(jumper.run(Command::kInstall).line("done"), "done version=3 release=3");
  EXPECT_THAT(jumper.versions(),
              ElementsAre("Quillory-Demo-1-complete", "Quillory-Demo-3-complete"));
}

TEST_F(Install, SaysWhatItDoes) {
  release(2, "2");
  Machine machine(releases_);
  const RunResult result = machine.run(Command::kInstall);
  std::vector<std::string> words;
  for (const std::string& line : result.lines) {
    const std::string word = line.substr(0, line.find(' '));
    if (words.empty() || words.back() != word) words.push_back(word);
  }
  EXPECT_THAT(words, ElementsAre("phase", "offer", "phase", "progress", "step", "done"));
  EXPECT_THAT(result.lines, Contains("step what=install component=application"));
  EXPECT_THAT(result.line("offer"), StartsWith("offer release=2 version=2 shown=2.0 size="));
}

TEST_F(Install, AsksOnceWhereNothingIsNew) {
  release(1, "1");
  Machine machine(releases_);
  machine.run(Command::kCheck);
  machine.transport.asked.clear();
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_EQ(result.status, update::kExitDone);
  EXPECT_EQ(result.line("none"), "none newest=1");
  ASSERT_EQ(machine.transport.asked.size(), 1u);
  EXPECT_EQ(machine.transport.asked[0].status, 304);
  EXPECT_EQ(machine.transport.sent(), 0);
}

TEST_F(Install, InstallsWhereThereIsNoApplicationYet) {
  release(2, "2");
  Machine machine(releases_, "");
  EXPECT_EQ(machine.run(Command::kInstall).line("done"), "done version=2 release=2");
  EXPECT_EQ(machine.fileOf("2", "app.jar"), "version 2");
}

TEST_F(Install, InstallsTheFirstVersionWhereThePackagerWantsNoUpdates) {
  release(2, "2");
  Machine machine(releases_, "");
  machine.settings.mode = UpdateMode::kOff;
  machine.writeSettings(machine.settings);
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
  release(3, "3");
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitOff);
}

TEST_F(Install, InstallsNothingWhereTheAdministratorWantsNone) {
  release(2, "2");
  Machine machine(releases_, "");
  writeFile(machine.administrators + "/Demo.conf", "mode = off\n");
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitOff);
  EXPECT_TRUE(machine.transport.asked.empty());
  EXPECT_EQ(machine.state().phase, Phase::kOff);
}

TEST_F(Install, StaysAtThePin) {
  release(3, "3");
  Machine machine(releases_);
  machine.extraProperties = property("qydyna_update_pin", "1");
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitOff);
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
}

TEST_F(Install, GoesOnWithWhatAnEarlierRunHasLoaded) {
  release(2, "2");
  Machine machine(releases_);
  EXPECT_EQ(machine.run(Command::kDownload).line("done"), "done version=2 release=2");
  EXPECT_EQ(machine.state().phase, Phase::kStaged);
  EXPECT_EQ(machine.state().stagedVersion, "2");
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
  machine.transport.asked.clear();
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
  EXPECT_EQ(machine.fileOf("2", "app.jar"), "version 2");
  EXPECT_EQ(machine.transport.countAsked("archive"), 0);
}

TEST_F(Install, PutsWhatIsLoadedInItsPlaceWithoutALine) {
  release(2, "2");
  Machine machine(releases_);
  machine.run(Command::kDownload);
  machine.transport.mishap = [](const AskedFor&) { return Mishap{.isUnreachable = true}; };
  EXPECT_EQ(machine.run(Command::kInstall).line("done"), "done version=2 release=2");
  EXPECT_EQ(machine.fileOf("2", "app.jar"), "version 2");
}

TEST_F(Install, PutsNothingInItsPlaceWithoutALineThatIsNotWhole) {
  release(2, "2");
  Machine machine(releases_);
  machine.run(Command::kDownload);
  std::filesystem::remove(machine / "QYUpdates/staging/Quillory-Demo-2-complete/QuilloryArchive");
  machine.transport.mishap = [](const AskedFor&) { return Mishap{.isUnreachable = true}; };
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitFailed);
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
}

TEST_F(Install, LoadsAnewWhatIsNoLongerWanted) {
  Machine machine(releases_);
  release(2, "2");
  machine.run(Command::kDownload);
  release(3, "3");
  EXPECT_EQ(machine.run(Command::kInstall).line("done"), "done version=3 release=3");
  EXPECT_TRUE(std::filesystem::is_empty(machine / "QYUpdates/staging"));
}

TEST_F(Install, CanBeCancelledAndGoesOnAnotherTime) {
  releases_.publish(ReleaseFolder::list(2, {noisyApp("2")}));
  Machine machine(releases_);
  machine.transport.mishap = [](const AskedFor& about) {
    if (about.name.find("archive") != std::string::npos) update::isCancelled = true;
    return Mishap();
  };
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_EQ(result.status, update::kExitFailed);
  EXPECT_EQ(result.line("failed"), "failed reason=cancelled retry=1");
  EXPECT_EQ(machine.state().failures, 0);
  update::isCancelled = false;
  machine.transport.mishap = [](const AskedFor&) { return Mishap(); };
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
}

TEST_F(Install, IsBusyWhereAnotherRunIsAtWork) {
  release(2, "2");
  Machine machine(releases_);
  std::filesystem::create_directories(machine / "QYUpdates");
  update::UpdateLock lock;
  ASSERT_EQ(lock.take(machine / "QYUpdates"), update::UpdateLock::Taken::kYes);
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_EQ(result.status, update::kExitBusy);
  EXPECT_THAT(result.lines, ElementsAre("busy"));
  EXPECT_TRUE(machine.transport.asked.empty());
}

TEST_F(Install, WaitsForAStartThatInstalls) {
  release(2, "2");
  Machine machine(releases_);
  int turns = 0;
  static int* counted = nullptr;
  counted = &turns;
  const ScopedReplace held(
      lockCalls.tryToLock, +[](int) { return ++*counted < 5 ? EWOULDBLOCK : 0; });
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
  EXPECT_EQ(machine.fileOf("2", "app.jar"), "version 2");
  EXPECT_EQ(turns, 5);
}

TEST_F(Install, LoadsWhileAStartInstalls) {
  release(2, "2");
  Machine machine(releases_);
  InstallationLock lock;
  ASSERT_TRUE(lock.tryToTake(machine.master()));
  EXPECT_EQ(machine.run(Command::kDownload).status, update::kExitDone);
}

TEST_F(Install, LeavesAVersionThatSomebodyElseHasInstalled) {
  release(2, "2");
  Machine machine(releases_);
  machine.run(Command::kDownload);
  machine.transport.mishap = [&](const AskedFor&) {
    machine.installApplication("2", {{"app.jar", "of another start"}});
    return Mishap();
  };
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
  EXPECT_EQ(machine.fileOf("2", "app.jar"), "of another start");
}

TEST_F(Install, SaysThatTheDiskIsFullAndLeavesWhatIsThere) {
  releases_.publish(ReleaseFolder::list(2, {noisyApp("2")}));
  Machine machine(releases_);
  RunResult result;
  {
    const FileSizeLimit full(10000);
    result = machine.run(Command::kInstall);
  }
  EXPECT_EQ(result.status, update::kExitFailed);
  EXPECT_THAT(result.line("failed"), HasSubstr("File%20too%20large"));
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
}

TEST_F(Install, LoadsNothingThatTheDiskHasNoRoomFor) {
  ReleaseComponent large = app("2");
  large.installedLength = 999'999'999'999'999;
  releases_.publish(ReleaseFolder::list(2, {large}));
  Machine machine(releases_);
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_THAT(result.line("failed"), HasSubstr("are%20needed,%20and"));
  EXPECT_EQ(machine.transport.countAsked("archive"), 0);
}

// Lets others look into what is this user's alone.
void openToOthers(const std::string& folder) {
  namespace fs = std::filesystem;
  constexpr auto kLook = fs::perms(0055);
  fs::permissions(folder, kLook, fs::perm_options::add);
  fs::permissions(fs::path(folder).parent_path(), kLook, fs::perm_options::add);
}

TEST_F(Install, NeedsAnAdministratorWhereOnlyHeMayWrite) {
  release(2, "2");
  Machine machine(releases_);
  machine.extraProperties =
      property("qystat_install_type", "perm_all") + property("qydyna_hardened", "true");
  openToOthers(machine.master());
  openToOthers(releases_.path());
  const TempDir own;
  chmod(own.str().c_str(), 0777);
  machine.ownFolder = own.str();
  const update::Installation its = machine.installation();
  const AsOrdinaryUser somebody;
  const RunResult result = machine.runOn(its, Command::kInstall);
  EXPECT_EQ(result.status, update::kExitNeedsAdministrator);
  EXPECT_THAT(result.line("failed"), HasSubstr("needs%20an%20administrator"));
  EXPECT_EQ(machine.transport.countAsked("archive"), 0);
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
  EXPECT_TRUE(std::filesystem::exists(own / "QYUpdates/state"));
  // In the background it is only told.
  EXPECT_EQ(machine.runOn(its, Command::kBackground).status, update::kExitDone);
}

TEST_F(Install, NeedsAnAdministratorWhereItMayNotEvenRemember) {
  release(2, "2");
  Machine machine(releases_);
  openToOthers(machine.master());
  const update::Installation its = machine.installation();
  const AsOrdinaryUser somebody;
  const RunResult result = machine.runOn(its, Command::kInstall);
  EXPECT_EQ(result.status, update::kExitNeedsAdministrator);
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
}

TEST_F(Install, OffersNothingBeforeItsRolloutHasComeToIt) {
  ReleaseList list = ReleaseFolder::list(2, {app("2")});
  list.rollout = {.start = kIssued + 10 * kDay, .days = 10, .percent = 100};
  releases_.publish(list);
  Machine machine(releases_);
  EXPECT_EQ(machine.run(Command::kInstall).line("none"), "none newest=2");
  machineTime += 10 * kDay;
  EXPECT_EQ(machine.run(Command::kInstall).line("done"), "done version=2 release=2");
}

TEST_F(Install, TakesAWithdrawnVersionBack) {
  Machine machine(releases_);
  const ReleaseComponent one = app("1");
  const ReleaseComponent two = app("2");
  releases_.publish(ReleaseFolder::list(2, {two}));
  machine.run(Command::kInstall);
  std::filesystem::remove_all(machine / "Quillory-Demo-1-complete");
  ReleaseList list = ReleaseFolder::list(3, {one});
  list.withdrawn = {{two.plainSha256, "2"}};
  list.rollout = {.start = kIssued + 20 * kDay, .days = 10, .percent = 100};
  releases_.publish(list);
  EXPECT_EQ(machine.run(Command::kInstall).line("done"), "done version=1 release=3");
  EXPECT_EQ(machine.fileOf("1", "app.jar"), "version 1");
  EXPECT_THAT(machine.state().withdrawn, ElementsAre("2"));
}

TEST_F(Install, DoesNotInstallAgainWhatDidNotWork) {
  const ReleaseComponent two = app("2");
  releases_.publish(ReleaseFolder::list(2, {two}));
  Machine machine(releases_);
  writeFile(machine / "QYUpdates/trials",
            records({"1", "1", "Quillory-Demo-2-complete", two.plainSha256, "2", "TOLD"}));
  EXPECT_EQ(machine.run(Command::kInstall).line("none"), "none newest=2");
  release(3, "3");
  EXPECT_EQ(machine.run(Command::kInstall).line("done"), "done version=3 release=3");
}

TEST_F(Install, KeepsARuntimeAndAnUpdaterInStep) {
  const Content runtime = {{"Contents/", ""},          {"Contents/Home/", ""},
                           {"Contents/Home/bin/", ""}, {"Contents/Home/bin/java", "#!/bin/sh\n"},
                           {"Contents/Home/lib/", ""}, {"Contents/Home/lib/rt.jar", "rt"},
                           {"Contents/MacOS/", ""},    {"Contents/MacOS/libjli", "jli"}};
  const ReleaseComponent updater =
      releases_.add(kUpdaterRole, "Quillory", "2", {{"QuilloryLaunch", "launch 2"}});
  const ReleaseComponent jre = releases_.add(kRuntimeRole, "JRE", "17", runtime);
  releases_.publish(ReleaseFolder::list(2, {updater, jre, app("2")}));
  Machine machine(releases_);
  const RunResult result = machine.run(Command::kInstall);
  ASSERT_EQ(result.status, update::kExitDone) << result.line("failed");
  EXPECT_EQ(readFile(machine / "Quillory-Quillory-2-complete/QuilloryLaunch"), "launch 2");
  EXPECT_EQ(readFile(machine / "Quillory-Quillory-2-complete/lzma64"), "the tool");
  EXPECT_EQ(readFile(machine / "Quillory-JRE-17-complete/lib/rt.jar"), "rt");
  EXPECT_EQ(
      std::filesystem::read_symlink(machine / "Quillory-JRE-17-complete.plugin/Contents/Home"),
      machine / "Quillory-JRE-17-complete");
  EXPECT_EQ(readFile(machine / "Quillory-JRE-17-complete.plugin/QuilloryArchive"),
            jre.plainSha256 + '\n');
  EXPECT_EQ(machine.run(Command::kInstall).line("none"), "none newest=2");
  const auto inventory = update::takeInventory(machine.installation());
  ASSERT_EQ(inventory.runtimes.size(), 1u);
  EXPECT_EQ(inventory.runtimes[0].archiveSha256, jre.plainSha256);
}

TEST_F(Install, FinishesARuntimeThatWasKilledBetweenItsTwoMoves) {
  const ReleaseComponent jre = releases_.add(
      kRuntimeRole, "JRE", "17",
      {{"Contents/Home/bin/java", "#!/bin/sh\n"}, {"Contents/Home/lib/rt.jar", "rt"}});
  releases_.publish(ReleaseFolder::list(2, {jre, app("1")}));
  Machine machine(releases_);
  ASSERT_EQ(machine.run(Command::kDownload).status, update::kExitDone);
  std::filesystem::rename(machine / "QYUpdates/staging/Quillory-JRE-17-complete.home",
                          machine / "Quillory-JRE-17-complete");
  machine.run(Command::kInstall);
  EXPECT_TRUE(std::filesystem::exists(machine / "Quillory-JRE-17-complete.plugin/QuilloryArchive"));
}

TEST_F(Install, PassesOverARuntimeOfAnotherName) {
  const ReleaseComponent jre =
      releases_.add(kRuntimeRole, "OtherJRE", "17", {{"Contents/Home/bin/java", "#!/bin/sh\n"}});
  releases_.publish(ReleaseFolder::list(2, {jre, app("2")}));
  Machine machine(releases_);
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
  EXPECT_FALSE(std::filesystem::exists(machine / "Quillory-OtherJRE-17-complete"));
}

TEST_F(Install, RefusesARuntimeWithoutAJava) {
  const ReleaseComponent jre =
      releases_.add(kRuntimeRole, "JRE", "17", {{"Contents/Home/readme", "nothing"}});
  releases_.publish(ReleaseFolder::list(2, {jre, app("2")}));
  Machine machine(releases_);
  EXPECT_THAT(machine.run(Command::kInstall).line("failed"),
              HasSubstr("holds%20no%20usable%20Java%20runtime"));
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
}

TEST_F(Install, IsNotHeldUpByAClockThatJumps) {
  release(2, "2");
  Machine machine(releases_);
  machineTime = 1000;
  EXPECT_EQ(machine.run(Command::kBackground).status, update::kExitDone);
  EXPECT_EQ(machine.fileOf("2", "app.jar"), "version 2");
  release(3, "3");
  machineTime = kIssued * 2;
  EXPECT_EQ(machine.run(Command::kBackground).status, update::kExitDone);
  EXPECT_EQ(machine.fileOf("3", "app.jar"), "version 3");
  machineTime = kIssued;
  release(4, "4");
  EXPECT_EQ(machine.run(Command::kBackground).status, update::kExitDone);
  EXPECT_EQ(machine.fileOf("4", "app.jar"), "version 4");
}

TEST_F(Install, SaysSoWhenItIsOffline) {
  Machine machine(releases_);
  machine.transport.mishap = [](const AskedFor&) { return Mishap{.isUnreachable = true}; };
  EXPECT_EQ(machine.run(Command::kInstall).line("failed"),
            "failed reason=there%20is%20nobody%20of%20that%20name retry=1");
  EXPECT_EQ(machine.state().failures, 1);
  EXPECT_EQ(machine.run(Command::kBackground).lines, std::vector<std::string>());
}

TEST_F(Install, AsksMirrorsInTheirOrder) {
  release(2, "2");
  Machine machine(releases_);
  machine.settings.mirrors = {"http://two.test/app", "http://three.test/app/"};
  machine.writeSettings(machine.settings);
  machine.transport.serve("http://three.test/app/", releases_.path());
  machine.transport.mishap = [](const AskedFor& about) {
    return about.request.url.starts_with("http://one.test/") ? Mishap{.status = 503} : Mishap();
  };
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
  EXPECT_THAT(machine.transport.asked.at(1).request.url,
              StartsWith("http://two.test/app/Quillory"));
  EXPECT_THAT(machine.transport.asked.at(2).request.url, StartsWith("http://three.test/app/"));
}

class Background : public Install {};

TEST_F(Background, InstallsWhatIsNewAndRestsUntilTheNextCheck) {
  release(2, "2");
  Machine machine(releases_);
  EXPECT_EQ(machine.run(Command::kBackground).line("done"), "done version=2 release=2");
  machine.transport.asked.clear();
  EXPECT_THAT(machine.run(Command::kBackground).lines, IsEmpty());
  EXPECT_THAT(machine.transport.asked, IsEmpty());
  machineTime += 29 * 3600;
  EXPECT_EQ(machine.run(Command::kBackground).line("none"), "none newest=2");
}

TEST_F(Background, OnlyOffersWhereItIsToAsk) {
  release(2, "2");
  Machine machine(releases_);
  machine.settings.mode = UpdateMode::kAsk;
  machine.writeSettings(machine.settings);
  const RunResult result = machine.run(Command::kBackground);
  EXPECT_EQ(result.status, update::kExitDone);
  EXPECT_NE(result.line("offer"), "");
  EXPECT_EQ(machine.state().phase, Phase::kAvailable);
  EXPECT_EQ(machine.state().offer.version, "2");
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
}

TEST_F(Background, DoesNothingWhereItIsToBeAsked) {
  release(2, "2");
  Machine machine(releases_);
  machine.settings.mode = UpdateMode::kManual;
  machine.writeSettings(machine.settings);
  EXPECT_THAT(machine.run(Command::kBackground).lines, IsEmpty());
  EXPECT_THAT(machine.transport.asked, IsEmpty());
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
}

TEST_F(Background, LeavesASkippedVersionAndOneThatIsToWait) {
  release(2, "2");
  Machine machine(releases_);
  machine.run(Command::kSkip, "2");
  machine.run(Command::kBackground);
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
  release(3, "3");
  machine.run(Command::kRemindLater, "48");
  machineTime += 30 * 3600;
  machine.run(Command::kBackground);
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
  machineTime += 30 * 3600;
  machine.run(Command::kBackground);
  EXPECT_EQ(machine.fileOf("3", "app.jar"), "version 3");
}

TEST_F(Background, LoadsOnMeteredLinesOnlyWhatIsCritical) {
  const ScopedReplace metered(
      update::meteredCalls.isMetered, +[] { return true; });
  ReleaseList list = ReleaseFolder::list(2, {app("2")});
  releases_.publish(list);
  Machine machine(releases_);
  machine.run(Command::kBackground);
  EXPECT_THAT(machine.versions(), ElementsAre("Quillory-Demo-1-complete"));
  list.number = 3;
  list.criticalBelow = 2;
  releases_.publish(list);
  machineTime += 30 * 3600;
  EXPECT_THAT(machine.run(Command::kBackground).line("offer"), HasSubstr("critical=1"));
  EXPECT_EQ(machine.fileOf("2", "app.jar"), "version 2");
}

TEST_F(Background, DeletesOldVersionsThatNobodyHolds) {
  release(5, "5");
  Machine machine(releases_);
  for (const char* const version : {"2", "3", "4"})
    machine.installApplication(version, {{"app.jar", "x"}});
  machine.extraProperties = property("qystat_wrapper_app_version", "2");
  machine.run(Command::kInstall);
  machine.run(Command::kBackground);
  // What the bundle carries stays: its launcher would install it again.
  EXPECT_THAT(machine.versions(),
              ElementsAre("Quillory-Demo-2-complete", "Quillory-Demo-4-complete",
                          "Quillory-Demo-5-complete"));
}

TEST_F(Background, DeletesOldUpdatersAndRuntimes) {
  release(1, "1");
  Machine machine(releases_);
  for (const char* const version : {"2", "3", "4"}) {
    writeFile(machine / ("Quillory-Quillory-" + std::string(version) + "-complete/QuilloryLaunch"),
              "x");
    const std::string alias = machine / ("Quillory-JRE-" + std::string(version) + "-complete");
    writeFile(alias + "/bin/java", "x");
    writeFile(alias + "/lib/rt.jar", "x");
    std::filesystem::create_directories(alias + ".plugin/Contents");
    std::filesystem::create_symlink(alias, alias + ".plugin/Contents/Home");
  }
  machine.run(Command::kBackground);
  // The updater of this start is the first.
  for (const char* const kept : {"Quillory-Quillory-1-complete", "Quillory-Quillory-3-complete",
                                 "Quillory-Quillory-4-complete", "Quillory-JRE-3-complete",
                                 "Quillory-JRE-3-complete.plugin", "Quillory-JRE-4-complete"})
    EXPECT_TRUE(std::filesystem::exists(machine / kept)) << kept;
  for (const char* const gone : {"Quillory-Quillory-2-complete", "Quillory-JRE-2-complete",
                                 "Quillory-JRE-2-complete.plugin"})
    EXPECT_FALSE(std::filesystem::exists(machine / gone)) << gone;
}

TEST_F(Background, KeepsTheVersionsThatAreKnownToWork) {
  release(6, "6");
  Machine machine(releases_);
  for (const char* const version : {"2", "3", "4", "5", "6"})
    machine.installApplication(version, {{"app.jar", "x"}});
  writeFile(machine / "QYUpdates/trials",
            records({"1", "2", "Quillory-Demo-3-complete", "", "1", "GOOD",
                     "Quillory-Demo-2-complete", "", "1", "GOOD"}));
  machine.run(Command::kBackground);
  EXPECT_THAT(machine.versions(),
              ElementsAre("Quillory-Demo-2-complete", "Quillory-Demo-3-complete",
                          "Quillory-Demo-5-complete", "Quillory-Demo-6-complete"));
}

TEST_F(Background, KeepsAVersionThatRuns) {
  release(1, "1");
  Machine machine(releases_);
  for (const char* const version : {"2", "3"})
    machine.installApplication(version, {{"app.jar", "x"}});
  const std::string hold = machine / "QYUpdates/holds/Quillory-Demo-1-complete";
  writeFile(hold, "");
  const pid_t child = fork();
  if (child == 0) {
    const int file = open(hold.c_str(), O_RDWR);
    struct flock lock {};
    lock.l_type = F_RDLCK;
    fcntl(file, F_SETLK, &lock);
    writeFile(hold + ".taken", "");
    pause();
    _exit(0);
  }
  while (!std::filesystem::exists(hold + ".taken")) std::this_thread::yield();
  machine.run(Command::kBackground);
  EXPECT_THAT(machine.versions(), Contains("Quillory-Demo-1-complete"));
  kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  machine.run(Command::kBackground);
  EXPECT_THAT(machine.versions(), Not(Contains("Quillory-Demo-1-complete")));
}

class Commands : public Install {};

TEST_F(Commands, CheckLoadsNothing) {
  release(2, "2");
  Machine machine(releases_);
  const RunResult result = machine.run(Command::kCheck);
  EXPECT_EQ(result.status, update::kExitDone);
  EXPECT_NE(result.line("offer"), "");
  EXPECT_EQ(machine.transport.asked.size(), 1u);
}

TEST_F(Commands, StatusAsksNobody) {
  release(2, "2");
  Machine machine(releases_);
  machine.run(Command::kCheck);
  machine.transport.asked.clear();
  const RunResult result = machine.run(Command::kStatus);
  EXPECT_THAT(result.lines.at(0), StartsWith("status phase=AVAILABLE reason= release=2 checked="));
  EXPECT_THAT(result.lines.at(0), HasSubstr(" offered=2 staged= previous= shown="));
  EXPECT_THAT(result.lines.at(0), HasSubstr(" skipped= remind=0"));
  EXPECT_THAT(machine.transport.asked, IsEmpty());
}

TEST_F(Commands, SetChannelAsksForAnotherList) {
  release(7, "2");
  ReleaseList beta = ReleaseFolder::list(3, {app("3")});
  beta.channel = "beta";
  releases_.publish(beta);
  Machine machine(releases_);
  machine.run(Command::kCheck);
  EXPECT_EQ(machine.run(Command::kSetChannel, "beta").status, update::kExitDone);
  EXPECT_EQ(machine.run(Command::kInstall).line("done"), "done version=3 release=3");
  machine.run(Command::kSetChannel, "stable");
  release(6, "4");
  EXPECT_THAT(machine.run(Command::kCheck).line("failed"), HasSubstr("release%207%20has%20been"));
}

TEST_F(Commands, RefuseWhatMakesNoSense) {
  Machine machine(releases_);
  release(2, "2");
  machine.run(Command::kCheck);
  EXPECT_EQ(machine.run(Command::kSetChannel, "../x").status, update::kExitUsage);
  EXPECT_EQ(machine.run(Command::kRemindLater, "soon").status, update::kExitUsage);
  EXPECT_EQ(machine.state().phase, Phase::kAvailable);
}

TEST_F(Commands, SayThatTheFolderIsNotTheirs) {
  Machine machine(releases_);
  writeFile(machine / "QYUpdates", "not a folder");
  EXPECT_THAT(machine.run(Command::kCheck).line("failed"), HasSubstr("QYUpdates"));
}

}  // namespace
}  // namespace quillory::testing
