#include "launcher/component_extraction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "install/unfinished.h"
#include "support/clock.h"
#include "support/exit_status.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"
#include "tests/launcher/test_bundle.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

/// Stands for the tool of the same name: `lzma64 d IN OUT` copies.
constexpr char kCopyingTool[] = "#!/bin/sh\ncp \"$2\" \"$3\"\n";

class ExtractUpdater : public ::testing::Test {
 protected:
  ExtractUpdater() {
    folders_ = {master_ / "Quillory-Quillory-7-complete", master_ / "QuilloryTemp-1-2-app",
                master_ / "Quillory-App-3-complete", master_ / "QuilloryTemp-1-2-app"};
    fs::create_directory(folders_.guTemp);
  }

  void extract(const std::string& entries, const SplashOverride& splashOverride = {}) {
    const StreamOf stream(entries);
    result_ = extractUpdater({stream.get(), nullptr}, folders_, splashOverride);
    next_ = std::fgetc(stream.get());
  }

  TempDir master_;
  ComponentFolders folders_;
  ExtractionResult result_;
  int next_ = 0;  ///< the byte behind what was extracted
  CapturedLog log_;
};

const std::string kToolAndPicture =
    fileEntry("lzma64", kCopyingTool) + fileEntry("nativesplash.png", "picture");

TEST_F(ExtractUpdater, TakesFiveEntriesAndMovesThemIntoPlace) {
  extract(kToolAndPicture + fileEntry("cacerts", "certificates") +
          fileEntry("verpatch.exe", "patcher") +
          fileEntry("GU.p2.l2", archiveOf(fileEntry("QuilloryLaunch", "launch"))) + "!");
  EXPECT_EQ(readFile(folders_.gu + "/lzma64"), kCopyingTool);
  EXPECT_EQ(readFile(folders_.gu + "/nativesplash.png"), "picture");
  EXPECT_EQ(readFile(folders_.gu + "/cacerts"), "certificates");
  EXPECT_EQ(readFile(folders_.gu + "/verpatch.exe"), "patcher");
  EXPECT_EQ(readFile(folders_.gu + "/QuilloryLaunch"), "launch");
  EXPECT_FALSE(fs::exists(folders_.gu + "/GU.p2.l2"));
  EXPECT_FALSE(fs::exists(folders_.gu + "/GU.p2"));
  EXPECT_FALSE(fs::exists(folders_.guTemp));
  EXPECT_EQ(modeOf(folders_.gu), 0777U);
  EXPECT_EQ(modeOf(folders_.gu + "/lzma64"), 0777U);
  EXPECT_EQ(next_, '!');
}

TEST_F(ExtractUpdater, SkipsEmptyEntriesInAnyOrder) {
  extract(kToolAndPicture + fileEntry("GU.p2", archiveOf(fileEntry("QuilloryLaunch", "launch"))) +
          emptyEntry("verpatch.exe") + emptyEntry("cacerts") + "!");
  EXPECT_EQ(readFile(folders_.gu + "/QuilloryLaunch"), "launch");
  EXPECT_FALSE(fs::exists(folders_.gu + "/verpatch.exe"));
  EXPECT_FALSE(fs::exists(folders_.gu + "/cacerts"));
  EXPECT_EQ(next_, '!');
}

TEST_F(ExtractUpdater, LogsItsSteps) {
  extract(kToolAndPicture + emptyEntry("a") + emptyEntry("b") + emptyEntry("c"));
  EXPECT_EQ(log_.messages().front(), "[Extractor] LZMA path is " + folders_.guTemp + "/lzma64\n");
  EXPECT_TRUE(
      log_.contains("[Extractor] Ensuring LZMA is executable.\n"
                    "[ChMod] Executing chmod 777 \"" +
                    folders_.guTemp + "/lzma64\"\n"));
  EXPECT_TRUE(
      log_.contains("[Extractor] Extracted GU and GU Version\n"
                    "[Extractor] Renaming GU folder to " +
                    folders_.gu + "\n"));
  EXPECT_EQ(log_.messages().back(), "[ChMod] Executing chmod 777 \"" + folders_.gu + "\"\n");
}

TEST_F(ExtractUpdater, GoesOnWithoutATool) {
  extract(emptyEntry("lzma64") + fileEntry("nativesplash.png", "picture") + emptyEntry("a") +
          emptyEntry("b") + emptyEntry("c"));
  EXPECT_TRUE(
      log_.contains("[Extractor] ***************************** Error setting LZMA executable!\n"));
  EXPECT_TRUE(fs::exists(folders_.gu + "/nativesplash.png"));
}

TEST_F(ExtractUpdater, PutsTheOwnPictureInPlaceOfTheShippedOne) {
  extract(kToolAndPicture + emptyEntry("a") + emptyEntry("b") + emptyEntry("c"), {"1", "own"});
  EXPECT_EQ(readFile(folders_.gu + "/nativesplash.png"), "own");
}

TEST_F(ExtractUpdater, ReplacesAnEarlierInstallationOfTheSameVersion) {
  writeFile(folders_.gu + "/old", "old");
  extract(kToolAndPicture + emptyEntry("a") + emptyEntry("b") + emptyEntry("c"));
  EXPECT_FALSE(fs::exists(folders_.gu + "/old"));
  EXPECT_EQ(readFile(folders_.gu + "/nativesplash.png"), "picture");
}

TEST_F(ExtractUpdater, TakesATailThatEndsEarly) {
  extract(kToolAndPicture);
  EXPECT_EQ(readFile(folders_.gu + "/nativesplash.png"), "picture");
}

// unpack200 is a program of a runtime, and none is there yet.
TEST_F(ExtractUpdater, HasNoUnpack200) {
  const std::string packed = records({"2", "a.jar", "6"}) + "packed";
  extract(kToolAndPicture + fileEntry("GU.p2", archiveOf(packed)));
  EXPECT_EQ(result_.end, ExtractionEnd::kNotUnpacked);
  EXPECT_EQ(result_.entry, "a.jar");
  EXPECT_FALSE(log_.contains("[Spawner]")) << "nothing is run";
  EXPECT_FALSE(fs::exists(folders_.gu));
}

TEST_F(ExtractUpdater, MarksWhatItHasMovedUntilTheRestIsThere) {
  extract(kToolAndPicture + emptyEntry("a") + emptyEntry("b") + emptyEntry("c"));
  EXPECT_FALSE(isUnfinished(folders_.gu)) << "without a launch file it is no updater";
  fs::create_directory(folders_.guTemp);
  extract(kToolAndPicture + emptyEntry("a") + emptyEntry("b") +
          fileEntry("GU.p2", archiveOf(fileEntry("QuilloryLaunch", "launch"))));
  EXPECT_TRUE(isUnfinished(folders_.gu));
}

TEST_F(ExtractUpdater, MovesNothingAfterAnEntryThatIsRefused) {
  const std::string refused = fileEntry("../out", "x");
  const std::string tool = fileEntry("lzma64", kCopyingTool);
  for (const std::string& entries :
       {refused, tool + refused, kToolAndPicture + refused, kToolAndPicture + tool + refused}) {
    SCOPED_TRACE(entries);
    fs::create_directory(folders_.guTemp);
    extract(entries + "!");
    EXPECT_EQ(result_.end, ExtractionEnd::kEntryRefused);
    EXPECT_EQ(result_.entry, "../out");
    EXPECT_FALSE(fs::exists(folders_.gu));
    EXPECT_FALSE(fs::exists(folders_.guTemp));
  }
}

TEST(LocateUpdaterFiles, NamesAndLogsWhatTheRestUses) {
  const CapturedLog log;
  const UpdaterFiles files = locateUpdaterFiles("/m/gu");
  EXPECT_EQ(files.lzmaTool, "/m/gu/lzma64");
  EXPECT_EQ(files.caCerts, "/m/gu/cacerts");
  EXPECT_EQ(files.splashPicture, "/m/gu/nativesplash.png");
  EXPECT_EQ(log.text(),
            "[Extractor] Recreating GU location\n"
            "[Extractor] CACerts override path is /m/gu/cacerts\n"
            "[Extractor] Native Splash PNG path is /m/gu/nativesplash.png\n");
}

TEST(NameComponentFolders, NamesBothTemporaryFoldersBeforeEitherExists) {
  const TempDir master;
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{9000}; });
  const CapturedLog log;
  const ComponentFolders folders = nameComponentFolders(master.str(), "7", "App", "3");
  EXPECT_EQ(folders.gu, master / "Quillory-Quillory-7-complete");
  EXPECT_EQ(folders.guTemp, master / "QuilloryTemp-9-2-app");
  EXPECT_EQ(folders.app, master / "Quillory-App-3-complete");
  EXPECT_EQ(folders.appTemp, folders.guTemp);
  EXPECT_EQ(log.text(), "[Extractor] GU folder is " + folders.gu + "\n[Extractor] GU temp is " +
                            folders.guTemp + "\n");
}

TEST(ExtractApplication, TakesTwoEntriesAndMovesThemIntoPlace) {
  const TempDir master;
  const ComponentFolders folders = {"", "", master / "Quillory-App-3-complete",
                                    master / "QuilloryTemp-1-2-app"};
  const StreamOf stream(fileEntry("App.p2", archiveOf(fileEntry("lib/app.jar", "jar"))) +
                        emptyEntry("App.extra") + "!");
  const CapturedLog log;
  EXPECT_FALSE(
      extractApplication({stream.get(), nullptr}, folders, {.lzma = "/bin/true", .unpack200 = ""})
          .isFailure());
  EXPECT_EQ(readFile(folders.app + "/lib/app.jar"), "jar");
  EXPECT_FALSE(fs::exists(folders.appTemp));
  EXPECT_EQ(std::fgetc(stream.get()), '!');
  EXPECT_TRUE(
      log.text().starts_with("[Extractor] Offline installer - app to extract."
                             "[Extractor] APP folder is " +
                             folders.app +
                             "\n"
                             "[Extractor] APP temp is " +
                             folders.appTemp + "\n"));
  EXPECT_TRUE(log.contains("[Extractor] Extracting App...\n"));
  EXPECT_EQ(log.messages().back(), "[Extractor] Renaming App folder to " + folders.app + "\n");
}

TEST(ExtractApplication, MovesNothingAfterAPack200EntryThatLeftNothing) {
  const TempDir master;
  const ComponentFolders folders = {"", "", master / "app", master / "QuilloryTemp-1-2-app"};
  const std::string packed = records({"2", "a.jar", "3"}) + "abc";
  const StreamOf stream(fileEntry("App.p2", archiveOf(packed)) + emptyEntry("App.extra"));
  const CapturedLog log;
  const ExtractionResult result =
      extractApplication({stream.get(), nullptr}, folders, {.lzma = "l", .unpack200 = "/bin/true"});
  EXPECT_EQ(result.end, ExtractionEnd::kNotUnpacked);
  EXPECT_EQ(exitStatusOf(result), kExitUnpack200Failed);
  EXPECT_FALSE(fs::exists(folders.app));
}

// Everything in a folder that somebody else prepared could be replaced while it is unpacked.
TEST(ExtractApplication, UsesNoTemporaryFolderThatIsThere) {
  const TempDir master;
  fs::create_directory(master / "precious");
  fs::create_directory_symlink("precious", master / "QuilloryTemp-1-2-app");
  const ComponentFolders folders = {"", "", master / "app", master / "QuilloryTemp-1-2-app"};
  const StreamOf stream(fileEntry("hello.txt", "hello") + emptyEntry("b"));
  const CapturedLog log;
  const ExtractionResult result = extractApplication({stream.get(), nullptr}, folders, {});
  EXPECT_EQ(result.end, ExtractionEnd::kFileNotCreated);
  EXPECT_TRUE(fs::is_empty(master / "precious"));
}

TEST(ExtractApplication, FailsWithoutATemporaryFolder) {
  const TempDir master;
  const StreamOf stream(emptyEntry("a") + emptyEntry("b"));
  const CapturedLog log;
  const ExtractionResult result =
      extractApplication({stream.get(), nullptr}, {"", "", master / "app", master / "no/temp"}, {});
  EXPECT_EQ(result.end, ExtractionEnd::kFileNotCreated);
  EXPECT_EQ(result.path, master / "no/temp");
  const std::string frame(43, '*');
  EXPECT_TRUE(log.contains(frame + "\nUnable to create App Temp folder\n" + frame));
  EXPECT_FALSE(fs::exists(master / "app"));
}

TEST(ExtractTailEntry, UnpacksOnlyWithATool) {
  const TempDir folder;
  const TempDir tools;
  writeFile(tools / "lzma64", kCopyingTool);
  fs::permissions(tools / "lzma64", fs::perms::owner_all);
  const std::string entry = fileEntry("a.p2.l2", archiveOf(fileEntry("inside", "x")));
  const StreamOf stream(entry + entry);
  const CapturedLog log;
  extractTailEntry({stream.get(), nullptr}, {}, folder.str());
  EXPECT_TRUE(fs::exists(folder / "a.p2.l2"));
  extractTailEntry({stream.get(), nullptr}, {.lzma = tools / "lzma64", .unpack200 = ""},
                   folder.str());
  EXPECT_EQ(readFile(folder / "inside"), "x");
}

}  // namespace
}  // namespace quillory::testing
