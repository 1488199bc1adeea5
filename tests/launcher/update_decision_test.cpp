#include "launcher/update_decision.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "install/unfinished.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

constexpr char kNothing[] =
    "[Extractor] No latest GU or JRE version exists, will check tail for online/offline info\n";
constexpr char kNoJre[] = "[Extractor] Note: No latest JRE version exists\n";
constexpr char kJre[] = "[Extractor] Note: Latest JRE version does exist\n";

class DecideUpdate : public ::testing::Test {
 protected:
  void install(const std::string& folder) { fs::create_directories(master_ / folder); }

  void installJre() {
    writeFile(master_ / "Quillory-jre-8-complete/bin/java", "");
    writeFile(master_ / "Quillory-jre-8-complete/lib/rt.jar", "");
  }

  UpdateDecision decide(const char* guVersion, const char* appVersion) {
    return decideUpdate({master_.str(), "App", "jre", guVersion, appVersion});
  }

  /// What was logged, without the lines of the folder search and the file tests.
  std::vector<std::string> reasons() const {
    std::vector<std::string> lines;
    for (const std::string& line : log_.messages())
      if (!line.starts_with("[PickFolder]") && !line.starts_with("File exists:"))
        lines.push_back(line);
    return lines;
  }

  TempDir master_;
  CapturedLog log_;
};

TEST_F(DecideUpdate, ExtractsWhereNothingIsInstalled) {
  const UpdateDecision decision = decide("7", "3");
  EXPECT_TRUE(decision.extract);
  EXPECT_EQ(decision.installedGu, "");
  EXPECT_THAT(reasons(),
              ElementsAre("[Extractor] Checking for a latest valid GU\n", kNothing, kNoJre));
}

TEST_F(DecideUpdate, ExtractsWithoutAJreEvenIfTheUpdaterIsCurrent) {
  install("Quillory-Quillory-7-complete");
  const UpdateDecision decision = decide("7", "");
  EXPECT_TRUE(decision.extract);
  EXPECT_EQ(decision.installedGu, "Quillory-Quillory-7-complete");
  EXPECT_THAT(reasons(),
              ElementsAre("[Extractor] Checking for a latest valid GU\n", kNothing, kNoJre));
}

TEST_F(DecideUpdate, ExtractsForAJreWithoutRtJar) {
  install("Quillory-Quillory-7-complete");
  writeFile(master_ / "Quillory-jre-8-complete/bin/java", "");
  EXPECT_TRUE(decide("7", "").extract);
  EXPECT_THAT(reasons(),
              ElementsAre("[Extractor] Checking for a latest valid GU\n",
                          "[Extractor] The existing JRE Quillory-jre-8-complete is broken. "
                          "Instructing the wrapper to update.\n",
                          kNothing, kNoJre));
}

TEST_F(DecideUpdate, ExtractsForAJreWithoutJava) {
  install("Quillory-Quillory-7-complete");
  writeFile(master_ / "Quillory-jre-8-complete/lib/rt.jar", "");
  EXPECT_TRUE(decide("7", "").extract);
  EXPECT_TRUE(log_.contains("is broken"));
}

TEST_F(DecideUpdate, LooksOnlyAtTheNewestJre) {
  install("Quillory-Quillory-7-complete");
  installJre();
  install("Quillory-jre-9-complete");
  EXPECT_TRUE(decide("7", "").extract);
}

TEST_F(DecideUpdate, ExtractsWithoutAnUpdater) {
  installJre();
  const UpdateDecision decision = decide("7", "3");
  EXPECT_TRUE(decision.extract);
  EXPECT_EQ(decision.installedGu, "");
  EXPECT_THAT(reasons(),
              ElementsAre("[Extractor] Checking for a latest valid GU\n", kNothing, kJre));
}

// As root, who may open every folder, sees it too: what has the name is none.
TEST_F(DecideUpdate, ExtractsForAnUpdaterThatCannotBeOpened) {
  installJre();
  writeFile(master_ / "Quillory-Quillory-7-complete", "");
  EXPECT_TRUE(decide("7", "").extract);
  EXPECT_THAT(reasons(),
              ElementsAre("[Extractor] Checking for a latest valid GU\n",
                          "[Extractor] Quillory-Quillory-7-complete cannot be opened. Instructing "
                          "the wrapper to update.\n",
                          kNothing, kJre));
}

TEST_F(DecideUpdate, ExtractsForAJreWhoseHomeIsNotYetBehindItsAlias) {
  install("Quillory-Quillory-7-complete");
  writeFile(master_ / "Quillory-jre-8-complete.plugin/bin/java", "");
  writeFile(master_ / "Quillory-jre-8-complete.plugin/lib/rt.jar", "");
  EXPECT_TRUE(decide("7", "").extract);
  EXPECT_TRUE(log_.contains("The existing JRE Quillory-jre-8-complete.plugin is broken."));

  fs::remove_all(master_ / "Quillory-jre-8-complete.plugin");
  installJre();
  EXPECT_FALSE(decide("7", "").extract);
  writeFile(master_ / "Quillory-jre-8-complete.plugin/Contents/Home/lib/rest", "not yet moved");
  EXPECT_TRUE(decide("7", "").extract);
}

TEST_F(DecideUpdate, ExtractsAgainWhatWasCutShort) {
  installJre();
  install("Quillory-App-3-complete");
  install("Quillory-Quillory-7-complete");
  markUnfinished(master_ / "Quillory-Quillory-7-complete");
  EXPECT_TRUE(decide("7", "3").extract);
  EXPECT_THAT(reasons(),
              ElementsAre("[Extractor] Checking for a latest valid GU\n",
                          "[Extractor] Latest GU version exists: Quillory-Quillory-7-complete\n",
                          "[Extractor] Existing JRE exists: Quillory-jre-8-complete\n",
                          "[Extractor] The installation with Quillory-Quillory-7-complete did not "
                          "come to its end, so will extract again\n",
                          kJre));
  EXPECT_TRUE(decide("7", "").extract) << "also of an online installer";
  EXPECT_TRUE(decide("07", "3").extract) << "versions are numbers";
}

TEST_F(DecideUpdate, CountsOnlyWholeFoldersInAHardenedBundle) {
  installJre();
  writeFile(master_ / "Quillory-Quillory-7-complete/QuilloryLaunch", "launch");
  writeFile(master_ / "Quillory-App-3-complete/app.jar", "jar");
  install("Quillory-Quillory-8-complete");
  install("Quillory-App-4-complete");
  install("Quillory-jre-9-complete");
  UpdateQuestion question = {master_.str(), "App", "jre", "7", "3"};
  EXPECT_TRUE(decideUpdate(question).extract) << "the newest JRE is broken";
  question.onlyWhole = true;
  EXPECT_FALSE(decideUpdate(question).extract);
  EXPECT_EQ(decideUpdate(question).installedGu, "Quillory-Quillory-7-complete");
  EXPECT_TRUE(
      log_.contains("[PickFolder] Folder Quillory-jre-9-complete is not whole. Skipping.\n"));
  question.guVersion = "8";
  EXPECT_TRUE(decideUpdate(question).extract);
  question.guVersion = "7";
  question.appVersion = "4";
  EXPECT_TRUE(decideUpdate(question).extract);
}

TEST_F(DecideUpdate, RunsAnUnfinishedUpdaterOnlyWhereThereIsNoOther) {
  installJre();
  writeFile(master_ / "Quillory-Quillory-7-complete/QuilloryLaunch", "launch");
  writeFile(master_ / "Quillory-Quillory-8-complete/QuilloryLaunch", "launch");
  markUnfinished(master_ / "Quillory-Quillory-8-complete");
  EXPECT_EQ(updaterToRun(master_.str(), false), "Quillory-Quillory-8-complete");
  EXPECT_EQ(updaterToRun(master_.str(), true), "Quillory-Quillory-7-complete");
  const UpdateQuestion question = {master_.str(), "App", "jre", "8", "3", true};
  EXPECT_EQ(runnableUpdater(question), "Quillory-Quillory-7-complete");
  fs::remove_all(master_ / "Quillory-Quillory-7-complete");
  EXPECT_EQ(runnableUpdater(question), "Quillory-Quillory-8-complete");
  fs::remove_all(master_ / "Quillory-jre-8-complete");
  EXPECT_EQ(runnableUpdater(question), std::nullopt) << "without a JRE nothing runs";
}

TEST_F(DecideUpdate, LeavesWhatWasCutShortToTheBundleThatHasIt) {
  installJre();
  install("Quillory-App-3-complete");
  install("Quillory-Quillory-7-complete");
  markUnfinished(master_ / "Quillory-Quillory-7-complete");
  EXPECT_FALSE(decide("6", "3").extract);
  EXPECT_FALSE(decide("", "").extract);
}

TEST_F(DecideUpdate, ExtractsForANewerUpdater) {
  installJre();
  install("Quillory-Quillory-9-complete");
  EXPECT_TRUE(decide("10", "").extract);
  EXPECT_THAT(reasons(),
              ElementsAre("[Extractor] Checking for a latest valid GU\n",
                          "[Extractor] Latest GU version exists: Quillory-Quillory-9-complete\n",
                          "[Extractor] Existing JRE exists: Quillory-jre-8-complete\n",
                          "[Extractor] Our GU version is newer than existing latest version so "
                          "will extract and run\n",
                          kJre));
}

TEST_F(DecideUpdate, RunsACurrentUpdaterWhereTheTailHasNoApplication) {
  installJre();
  install("Quillory-Quillory-7-complete");
  const UpdateDecision decision = decide("7", "");
  EXPECT_FALSE(decision.extract);
  EXPECT_EQ(decision.installedGu, "Quillory-Quillory-7-complete");
  EXPECT_THAT(reasons(),
              ElementsAre("[Extractor] Checking for a latest valid GU\n",
                          "[Extractor] Latest GU version exists: Quillory-Quillory-7-complete\n",
                          "[Extractor] Existing JRE exists: Quillory-jre-8-complete\n",
                          "[Extractor] Latest GUversion is newer or same as our version so will "
                          "just run\n"));
}

TEST_F(DecideUpdate, DoesNotLookForAnApplicationWithoutAnUpdaterInTheTail) {
  installJre();
  install("Quillory-Quillory-7-complete");
  EXPECT_FALSE(decide("", "3").extract);
  EXPECT_FALSE(log_.contains("App version"));
}

TEST_F(DecideUpdate, ExtractsForAnApplicationThatIsNotInstalled) {
  installJre();
  install("Quillory-Quillory-7-complete");
  EXPECT_TRUE(decide("7", "3").extract);
  EXPECT_THAT(
      reasons(),
      ElementsAre("[Extractor] Checking for a latest valid GU\n",
                  "[Extractor] Latest GU version exists: Quillory-Quillory-7-complete\n",
                  "[Extractor] Existing JRE exists: Quillory-jre-8-complete\n",
                  "[Extractor] Latest GUversion is newer or same as our version so will "
                  "just run\n",
                  "[Extractor] No app version found and we are offline so will extract\n", kJre));
}

TEST_F(DecideUpdate, ExtractsForANewerApplication) {
  installJre();
  install("Quillory-Quillory-7-complete");
  install("Quillory-App-3-complete");
  EXPECT_TRUE(decide("7", "4").extract);
  EXPECT_THAT(reasons()[4],
              "[Extractor] Our App version is newer than existing latest version so will extract "
              "and run\n");
  EXPECT_EQ(reasons().back(), kJre);
}

TEST_F(DecideUpdate, RunsACurrentApplication) {
  installJre();
  install("Quillory-Quillory-7-complete");
  for (const char* installed : {"Quillory-App-3-complete", "Quillory-App-12-complete"}) {
    SCOPED_TRACE(installed);
    install(installed);
    EXPECT_FALSE(decide("7", "3").extract);
  }
  EXPECT_EQ(reasons().back(),
            "[Extractor] Latest App version is newer or same as our version so will just run\n");
}

TEST_F(DecideUpdate, ComparesVersionsAsNumbers) {
  installJre();
  install("Quillory-Quillory-9-complete");
  EXPECT_FALSE(decide("09", "").extract);
  EXPECT_FALSE(decide("9.5", "").extract);
  EXPECT_FALSE(decide("abc", "").extract);
  EXPECT_TRUE(decide("10", "").extract);
}

}  // namespace
}  // namespace quillory::testing
