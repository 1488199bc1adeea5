#include "launcher/installing_start.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "launcher/driver.h"
#include "support/clock.h"
#include "support/exit_status.h"
#include "tests/harness/scoped_replace.h"
#include "tests/launcher/whole_start.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

class ExtractEverything : public WholeStart {};

TEST_F(ExtractEverything, InstallsEverythingAndStartsTheUpdater) {
  const Ended ended = start({"one", "two words"});
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_EQ(readFile(installed("Quillory-Demo-3-complete/hello.txt")), "hello");
  EXPECT_EQ(readFile(installed("Quillory-Quillory-7-complete/nativesplash.png")), "picture");
  EXPECT_EQ(readFile(installed("Quillory-jre-17-complete/lib/rt.jar")), "classes");
  EXPECT_TRUE(fs::is_symlink(installed("Quillory-jre-17-complete.plugin/Contents/Home")));
  EXPECT_TRUE(fs::is_directory(installed("QYAppsSharedConfig")));
  for (const auto& entry : fs::directory_iterator(master_))
    EXPECT_FALSE(entry.path().filename().string().starts_with("QuilloryTemp-")) << entry.path();

  const std::string arguments = started();
  const std::string gu = installed("Quillory-Quillory-7-complete");
  EXPECT_TRUE(
      arguments.starts_with("-cp\n" + gu + "/app.jar\nFirst\n" + gu + "/QYLaunchProperties-"))
      << arguments;
  EXPECT_TRUE(arguments.ends_with("\none\ntwo words\n")) << arguments;
}

TEST_F(ExtractEverything, ExtractsEverythingAgainForANewerApplication) {
  start();
  started();
  TailText tail = offlineTail();
  tail.appVersion = "4";
  writeTail(tail, updaterEntries("Second") + jreEntry() + appEntries("hello from 4"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_EQ(readFile(installed("Quillory-Demo-4-complete/hello.txt")), "hello from 4");
  EXPECT_EQ(readFile(installed("Quillory-Demo-3-complete/hello.txt")), "hello");
  EXPECT_EQ(readFile(installed("Quillory-jre-17-complete/lib/rt.jar")), "classes");
  // The updater, too, is that of the new tail, although its version is the same.
  EXPECT_NE(started().find("\nSecond\n"), std::string::npos);
}

TEST_F(ExtractEverything, ExtractsForABrokenJreEvenIfTheUpdaterIsCurrent) {
  start();
  started();
  fs::remove(installed("Quillory-jre-17-complete/lib/rt.jar"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(ended.logs("[Extractor] The existing JRE Quillory-jre-17-complete is broken."));
  EXPECT_EQ(readFile(installed("Quillory-jre-17-complete/lib/rt.jar")), "classes");
  EXPECT_NE(started(), "");
}

TEST_F(ExtractEverything, CannotRunAsALauncherOnlyWithNothingInstalled) {
  TailText tail;
  writeTail(tail, "");
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("[Extractor] No GenericUpdater embedded, we are just a launcher\n"));
  EXPECT_TRUE(
      ended.logs("[Extractor] ONLINE wrapper: No App embedded, GU will download and run\n"));
  EXPECT_TRUE(ended.logs("[Extractor] Unable to run (we are just a launcher)\n"));
}

TEST_F(ExtractEverything, ExtractsNoApplicationOfAnOnlineInstaller) {
  start();
  started();
  TailText tail = offlineTail();
  tail.guVersion = "8";
  tail.jreVersion = "";
  tail.appVersion = "";
  writeTail(tail, updaterEntries("Eighth"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(ended.logs("[Extractor] Online installer - no app to extract\n"));
  EXPECT_NE(started().find("\nEighth\n"), std::string::npos);
}

TEST_F(ExtractEverything, EndsWithTheStatusOfAnExtractionThatFails) {
  const std::string refused = fileEntry("../out", "x");
  const std::string packed = fileEntry("App.p2", archiveOf(records({"2", "a.jar", "3"}) + "abc"));
  const std::string updater = updaterEntries("First");
  const struct {
    const char* where;
    std::string entries;
    int status;
  } kCases[] = {{"updater", refused, kExitFailure},
                {"JRE", updater + refused, kExitFailure},
                {"application", updater + jreEntry() + refused, kExitFailure},
                {"pack200", updater + jreEntry() + packed, kExitUnpack200Failed}};
  for (const auto& [where, entries, status] : kCases) {
    SCOPED_TRACE(where);
    fs::remove_all(home_ / "Library");
    writeTail(offlineTail(), entries);
    const Ended ended = start();
    EXPECT_EQ(ended.status, status);
    EXPECT_FALSE(ended.logs("+++ Start: Launching"));
    EXPECT_FALSE(fs::exists(installed("Quillory-Demo-3-complete")));
  }
}

TEST_F(ExtractEverything, EndsWhereTheApplicationHasNoTemporaryFolder) {
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{9000}; });
  writeTail(offlineTail(),
            updaterEntries("First") +
                jreEntry("#!/bin/sh\n: >\"${0%/*/*/*/*/*}\"/QuilloryTemp-9-4-app\n") +
                appEntries("hello"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("\nUnable to create App Temp folder\n")) << ended.log;
}

TEST_F(ExtractEverything, EndsWhereNoUpdaterIsLeftAfterExtraction) {
  writeTail(offlineTail(),
            updaterEntries("First") +
                jreEntry("#!/bin/sh\nrm -r \"${0%/*/*/*/*/*}\"/Quillory-Quillory-*\n") +
                appEntries("hello"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("No latest App version even after download!\n"));
}

/// A start that cannot create its temporary folder, because a file of its name is there.
class ExtractEverythingElevated : public ExtractEverything {
 protected:
  ExtractEverythingElevated() {
    for (const std::string& path : {bundle_.exePath(), bundle_.executable().resource("elev_mac")})
      bundle_.writeScript(path,
                          "#!/bin/sh\nfor a in \"$@\"; do echo \"$a\"; done >\"$0.called\"\n");
    fs::create_directories(master_ + "/logs");
    fs::create_directories(master_ + "/QYAppsSharedConfig");
    blockTemporaryFolders();
  }

  // The entries of the master folder are counted from 104 on, and no more names than these tried.
  void blockTemporaryFolders() {
    for (int count = 104; count < 204; ++count)
      writeFile(master_ + "/QuilloryTemp-9-" + std::to_string(count) + "-app", "in the way");
  }

  Ended startElevated(bool prepareOnly, bool isRelaunched = false) {
    const std::string shared = shared_.str();
    const ScopedReplace clock(
        timeCalls.nowMillis, +[] { return std::uint64_t{9000}; });
    std::string path = bundle_.exePath(), one = "one", last = kLast;
    char* argv[] = {path.data(), one.data(), last.data(), nullptr};
    return inChild([&] {
      StartSurroundings around{.homeFolder = [this] { return home_.str(); },
                               .sharedTemporaryFolder = shared};
      // A forked child has a parent that runs the same executable, as a relaunched copy has.
      if (!isRelaunched) around.isRelaunchedCopy = [] { return false; };
      runStart(argv[0], {2, argv + 1, 3, argv, prepareOnly}, around);
    });
  }

  static constexpr char kLast[] = "two words";
  TempDir shared_;
};

TEST_F(ExtractEverythingElevated, ElevatesAndRelaunchesWithItsOwnArguments) {
  const Ended ended = startElevated(false);
  EXPECT_EQ(ended.status, kExitSuccess) << ended.log;
  expectInOrder(
      ended.log,
      {"[Extractor] Unable to create GU Temp folder - assuming elevation required\n",
       "[Extractor] Native Splash PNG path is " + (shared_ / "nativesplash.png") + "\n",
       "[Extractor] Configuring splash\n", "[Extractor] Performing elevated setup and launch\n",
       "[SUDO] Elevation required.\n", "ShowSplash", "[SUDO] Relaunch complete\n"});
  EXPECT_EQ(
      readFile(bundle_.executable().resource("elev_mac") + ".called"),
      "--prompt=Demo\n" + bundle_.exePath() + "\none\ntwo words\nQYPREPARE_FOR_LAUNCH_ONLY\n");
  EXPECT_EQ(readFile(bundle_.exePath() + ".called"), "one\ntwo words\n");
  EXPECT_EQ(readFile(shared_ / "nativesplash.png"), "picture");
}

TEST_F(ExtractEverythingElevated, LeavesNoPrivateFolderBehindASetUp) {
  writeParams({{"jre_name", "jre"}, {"force_spawn", "true"}, {"hardened", "true"}});
  const Ended ended = startElevated(false);
  EXPECT_EQ(ended.status, kExitSuccess) << ended.log;
  EXPECT_TRUE(ended.logs("[SUDO] Relaunch complete\n"));
  EXPECT_TRUE(ended.logs("[Extractor] Native Splash PNG path is " + shared_.str() + "/"));
  EXPECT_FALSE(
      ended.logs("[Extractor] Native Splash PNG path is " + (shared_ / "nativesplash.png")));
  EXPECT_TRUE(fs::is_empty(shared_.path()));
}

TEST_F(ExtractEverythingElevated, LeavesNoPrivateFolderWhereThePictureCannotBeExtracted) {
  writeParams({{"jre_name", "jre"}, {"force_spawn", "true"}, {"hardened", "true"}});
  writeTail(offlineTail(), fileEntry("lzma64", "tool") + fileEntry("../out", "picture"));
  const Ended ended = startElevated(false);
  EXPECT_EQ(ended.status, kExitFailure) << ended.log;
  EXPECT_TRUE(ended.logs("/lzma64\n")) << "something was extracted";
  EXPECT_FALSE(ended.logs("[SUDO] Elevation required.\n"));
  EXPECT_TRUE(fs::is_empty(shared_.path()));
}

TEST_F(ExtractEverythingElevated, DoesNotElevateTheElevatedCopy) {
  const Ended ended = startElevated(true);
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_FALSE(ended.logs("[SUDO] Elevation required.\n"));
  EXPECT_FALSE(fs::exists(bundle_.executable().resource("elev_mac") + ".called"));
}

TEST_F(ExtractEverythingElevated, DoesNotElevateARelaunchedCopy) {
  const Ended ended = startElevated(false, true);
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("Will not elevate again.\n"));
  EXPECT_FALSE(fs::exists(bundle_.executable().resource("elev_mac") + ".called"));
  EXPECT_TRUE(fs::is_empty(shared_.path()));
}

}  // namespace
}  // namespace quillory::testing
