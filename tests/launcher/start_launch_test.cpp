#include "launcher/start_launch.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "install/installation_lock.h"
#include "support/exit_status.h"
#include "tests/launcher/whole_start.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class LaunchAndEnd : public WholeStart {};

// By intent: the launch call has said in the log what went wrong.
TEST_F(LaunchAndEnd, EndsWithZeroWhateverTheLaunchCallReturned) {
  writeTail(offlineTail(),
            updaterEntries("First") + jreEntry("neither a program nor a script") + appEntries("a"));
  const Ended ended = start();
  expectInOrder(ended.log, {"[Extractor] Attempting spawn launch\n", "Launch Error 8.\n"});
  EXPECT_EQ(ended.status, kExitSuccess);
}

TEST_F(LaunchAndEnd, EndsWithOneInAHardenedBundleWhoseApplicationCouldNotBeStarted) {
  const Pairs hardened = {{"jre_name", "jre"}, {"force_spawn", "true"}, {"hardened", "true"}};
  start({}, true);
  writeParams(hardened);
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_NE(started(), "");
  fs::remove(installed("Quillory-jre-17-complete/bin/demo"));
  writeFile(installed("Quillory-jre-17-complete/bin/java"), "neither a program nor a script");
  const Ended ended = start();
  expectInOrder(ended.log, {"[Extractor] Attempting spawn launch\n", "Launch Error 8.\n"});
  EXPECT_EQ(ended.status, kExitFailure);
}

TEST_F(LaunchAndEnd, OnlyInstallsInAPreparation) {
  const Ended ended = start({"one", "QYPREPARE_FOR_LAUNCH_ONLY"}, true);
  EXPECT_EQ(ended.status, kExitSuccess);
  EXPECT_TRUE(fs::exists(installed("Quillory-Demo-3-complete/hello.txt")));
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_FALSE(ended.logs("+++ Start: Launching"));
  EXPECT_EQ(start({}, true).status, kExitSuccess);
  EXPECT_FALSE(fs::exists(installed("started")));
}

TEST_F(LaunchAndEnd, TellsJavaWhereItWasStartedFrom) {
  start();
  EXPECT_NE(
      launchProperties(started()).find("qystat_launched_from_dynprops\0"s + bundle_.exePath()),
      std::string::npos);
}

TEST_F(LaunchAndEnd, TellsJavaAStaticUrlOnceAsReadAndOnceWithItsSlash) {
  TailText tail = offlineTail();
  tail.updateUrl = "http://no.invalid/x";
  writeTail(tail, updaterEntries("First") + jreEntry() + appEntries("hello"));
  start();
  const std::string properties = launchProperties(started());
  EXPECT_NE(properties.find("qystat_update_url\0http://no.invalid/x\0"s), std::string::npos);
  EXPECT_NE(properties.find("qystat_update_url\0http://no.invalid/x/\0"s), std::string::npos);
}

TEST_F(LaunchAndEnd, TellsJavaADynamicUrlWithItsSlashAtLaunch) {
  writeParams(
      {{"jre_name", "jre"}, {"force_spawn", "true"}, {"update_url", "http://no.invalid/d"}});
  TailText tail = offlineTail();
  tail.updateUrl = "D";
  writeTail(tail, updaterEntries("First") + jreEntry() + appEntries("hello"));
  start();
  const std::string properties = launchProperties(started());
  EXPECT_NE(properties.find("qydyna_update_url\0http://no.invalid/d\0"s), std::string::npos);
  EXPECT_NE(properties.find("qydyna_update_url\0http://no.invalid/d/\0"s), std::string::npos);
  EXPECT_NE(properties.find("qystat_update_url\0D\0"s), std::string::npos);
}

TEST_F(LaunchAndEnd, TellsJavaNoDynamicUrlWhereThereIsNone) {
  TailText tail = offlineTail();
  tail.updateUrl = "D";
  writeTail(tail, updaterEntries("First") + jreEntry() + appEntries("hello"));
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_EQ(launchProperties(started()).find("qydyna_update_url"), std::string::npos);
}

TEST_F(LaunchAndEnd, RunsTheApplicationWithoutTheLock) {
  start();
  started();
  InstallationLock other;
  EXPECT_TRUE(other.tryToTake(master_));
}

TEST_F(LaunchAndEnd, LaunchesNothingFromAnUpdaterThatIsEmpty) {
  // What an archive with a bad signature leaves behind.
  writeTail(offlineTail(), fileEntry("lzma64", "tool") + fileEntry("nativesplash.png", "picture") +
                               emptyEntry("a") + emptyEntry("b") + emptyEntry("c") + jreEntry() +
                               appEntries("hello"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("Unable to open launch file " +
                         installed("Quillory-Quillory-7-complete/QuilloryLaunch") + "\n"));
}

}  // namespace
}  // namespace quillory::testing
