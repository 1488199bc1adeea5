// What a start says and ends with, from its first step to its last.
#include "launcher/driver.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/exit_status.h"
#include "tests/launcher/whole_start.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class RunStart : public WholeStart {};

TEST_F(RunStart, TellsItsStoryInOrder) {
  const Ended ended = start();
  expectInOrder(
      ended.log,
      {"[Extractor] The absolute wrapper path is " + bundle_.exePath() + "\n",
       "[Extractor] Found Params marker. Extracting now...\n",
       "--- End: Processing dynamic properties\n",
       "+++ Start: Extracting wrapper tail\n",
       "[Extractor] No tail found. Trying ",
       "[Extractor] Will use Static Update URL: http://no.invalid/\n",
       "[Extractor] Is silent install is 0\n",
       "--- End: Extracting tail\n",
       "[Extractor] Setting up static properties\n",
       "[Extractor] Public key length 0 (no public key)\n",
       "Permanent install for current user\nHomeDir is " + home_.str() + "\n",
       "[Extractor] Shared dir is " + (home_ / "Library/Application Support") + "\n",
       "[Extractor] Update URL is currently 'http://no.invalid/'\n"
       "[Extractor] Update URL is now 'http://no.invalid/'\n",
       "[Extractor] Master folder is " + master_ + "\n",
       "[Extractor] Logging to ",
       "[JREOverride] No JRE name override, will continue to use jre\n",
       "[Extractor] GenericUpdater version is 7\n[Extractor] OFFLINE wrapper: App version is 3\n"
       "[Extractor] Checking for a latest valid GU\n",
       "[Extractor] Note: No latest JRE version exists\n"
       "[Extractor] Note: No latest GU version exists\n",
       "[Extractor] GU folder is ",
       "[Extractor] GU temp is ",
       "[Extractor] LZMA path is ",
       "[Extractor] Extracted GU and GU Version\n",
       "[Extractor] Recreating GU location\n",
       "[Extractor] Configuring splash\n",
       "[Extractor] Showing splash\n",
       "ShowSplash",
       "[Extractor] Setting up a JRE\n",
       "[Extractor] JRE setup. Overriding cacerts.\n",
       "[Extractor] Ensuring JRE bin is writable.\n",
       "[Extractor] UP200 path is " + installed("Quillory-jre-17-complete.plugin/Contents/Home/") +
           "bin/unpack200\n",
       "[Extractor] Offline installer - app to extract.",
       "[Extractor] Renaming App folder to ",
       "Called splash.cleanup",
       "[Extractor] Will now run latest GU Quillory-Quillory-7-complete\n",
       "+++ Start: Launching"});
  started();
}

TEST_F(RunStart, RunsAnInstalledUpdaterAsALauncherOnly) {
  start();
  started();
  writeTail({}, "");
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_NE(started(), "");
}

TEST_F(RunStart, ShowsNothingInASilentRunAndSaysSoToJava) {
  const Ended ended = start({"-quiet"});
  EXPECT_TRUE(ended.logs("[Extractor] Is silent install is 1\n"));
  EXPECT_TRUE(ended.logs("[Extractor] Showing splash\n"));
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_NE(launchProperties(started()).find("qystat_show_no_ui\0true\0"s), std::string::npos);
}

TEST_F(RunStart, IsSilentByAParameterToo) {
  writeParams({{"jre_name", "jre"}, {"force_spawn", "true"}, {"show_no_ui", "true"}});
  const Ended ended = start();
  EXPECT_TRUE(ended.logs("[Extractor] Is silent install is 1\n"));
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_NE(started(), "");
}

TEST_F(RunStart, ReadsATailInsideTheExecutableFirst) {
  TailText inside = offlineTail();
  inside.appName = "Inside";
  writeFile(bundle_.exePath(), "machine code" + tailMarker() + inside.bytes() +
                                   updaterEntries("First") + jreEntry() + appEntries("hello"));
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_NE(startedIn(home_ / "Library/Application Support/Quillory-Inside"), "");
  EXPECT_FALSE(fs::exists(master_));
}

TEST_F(RunStart, EndsWithoutParameters) {
  fs::remove(bundle_.resource("AppParams.excludefromsigning"));
  Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.log.ends_with("couldn't open params file\n"));

  bundle_.writeResource("AppParams.excludefromsigning", "no marker");
  ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.log.ends_with("Could not find marker: Params\n"));
}

TEST_F(RunStart, EndsWithoutATail) {
  fs::remove(bundle_.resource("Tail"));
  Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.log.ends_with("/../Resources/Tail\n"));

  fs::remove(bundle_.exePath());
  ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.log.ends_with("couldn't open file " + bundle_.exePath() + "\n"));
}

TEST(IsSilent, NeedsOneArgumentThatIsExactlyTheParameter) {
  char quiet[] = "-quiet", other[] = "-QUIET", longer[] = "-quietly";
  char* args[] = {other, longer, quiet};
  EXPECT_TRUE(isSilent("-quiet", 3, args));
  EXPECT_FALSE(isSilent("-quiet", 2, args));
  EXPECT_FALSE(isSilent("-quiet", 0, args));
  EXPECT_FALSE(isSilent("-quiet", -1, args));
}

TEST(IsSilent, IsFalseForAnEmptyParameterWhateverTheArguments) {
  char empty[] = "";
  char* args[] = {empty};
  EXPECT_FALSE(isSilent("", 1, args));
  EXPECT_FALSE(isSilent(nullptr, 1, args));
}

}  // namespace
}  // namespace quillory::testing
