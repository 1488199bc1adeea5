#include "launcher/elevated_setup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/exit_status.h"
#include "support/log.h"
#include "support/opened_files.h"
#include "support/platform.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"
#include "tests/launcher/in_child.h"
#include "tests/launcher/test_bundle.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

/// Writes its arguments, one a line, to the file "<itself>.arguments".
constexpr char kRecorder[] =
    "#!/bin/sh\n"
    "for argument in \"$@\"; do echo \"<$argument>\"; done >\"$0.arguments\"\n";

TEST(CreateDirectoryForAllUsers, MakesWhatIsMissingForTheSystemAlone) {
  const TempDir root;
  const mode_t before = umask(077);
  chmod(root.str().c_str(), 0711);
  createDirectoryForAllUsers(root / "Library/Application Support");
  umask(before);
  EXPECT_EQ(modeOf(root / "Library"), 0755U);
  EXPECT_EQ(modeOf(root / "Library/Application Support"), 0755U);
  EXPECT_EQ(modeOf(root.str()), 0711U);
}

TEST(CreateDirectoryForAllUsers, LeavesWhatIsThereAlone) {
  const TempDir root;
  fs::create_directory(root / "Library");
  chmod((root / "Library").c_str(), 0700);
  createDirectoryForAllUsers(root / "Library");
  EXPECT_EQ(modeOf(root / "Library"), 0700U);
}

TEST(MayElevate, LetsAFirstCopyPass) {
  const CapturedLog log;
  EXPECT_TRUE(mayElevate(false, false));
  EXPECT_EQ(log.text(), "");
}

TEST(MayElevate, RefusesTheElevatedCopy) {
  for (const bool isRelaunched : {false, true}) {
    const CapturedLog log;
    EXPECT_FALSE(mayElevate(true, isRelaunched));
    EXPECT_TRUE(log.contains(
        "[SUDO] The elevated setup cannot write to the install location either. Giving up.\n"));
    EXPECT_FALSE(log.contains("Will not elevate again.\n"));
  }
}

TEST(MayElevate, RefusesARelaunchedCopy) {
  const CapturedLog log;
  EXPECT_FALSE(mayElevate(false, true));
  EXPECT_TRUE(
      log.contains("[SUDO] The install location still cannot be written after an elevated "
                   "setup. Will not elevate again.\n"));
}

TEST(SharedTemporaryFolder, IsThatOfTheSystem) { EXPECT_STREQ(kSharedTemporaryFolder, "/tmp"); }

class ExtractSplashForElevation : public ::testing::Test {
 protected:
  void extract(const SplashOverride& splashOverride = {}) {
    const StreamOf stream(fileEntry("lzma64", "#!/bin/sh\ntouch \"$0.was-run\"\n") +
                          fileEntry("nativesplash.png", "picture") + "!");
    const ExtractionResult result =
        extractSplashForElevation({stream.get(), nullptr}, splashOverride, shared_.str());
    EXPECT_FALSE(result.isFailure());
    EXPECT_EQ(std::fgetc(stream.get()), '!');
  }

  TempDir shared_;
  CapturedLog log_;
};

TEST_F(ExtractSplashForElevation, TakesTwoEntriesAndRunsNeither) {
  extract();
  EXPECT_EQ(readFile(shared_ / "nativesplash.png"), "picture");
  EXPECT_TRUE(fs::exists(shared_ / "lzma64"));
  EXPECT_FALSE(fs::exists(shared_ / "lzma64.was-run"));
  EXPECT_TRUE(log_.contains("[Extractor] Native Splash PNG path is " +
                            (shared_ / "nativesplash.png") + "\n[Extractor] Configuring splash\n"));
}

TEST_F(ExtractSplashForElevation, PutsTheOwnPictureInPlace) {
  extract({"1", "own"});
  EXPECT_EQ(readFile(shared_ / "nativesplash.png"), "own");
}

TEST_F(ExtractSplashForElevation, ReplacesItsOwnOldFiles) {
  writeFile(shared_ / "lzma64", "old");
  writeFile(shared_ / "nativesplash.png", "old");
  extract();
  EXPECT_EQ(readFile(shared_ / "nativesplash.png"), "picture");
}

TEST_F(ExtractSplashForElevation, ReplacesPlantedLinks) {
  const TempDir elsewhere;
  for (const char* name : {"lzma64", "nativesplash.png"}) {
    writeFile(elsewhere / name, "precious");
    fs::create_symlink(elsewhere / name, shared_ / name);
  }
  extract({"1", "own"});
  for (const char* name : {"lzma64", "nativesplash.png"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(readFile(elsewhere / name), "precious");
    EXPECT_FALSE(fs::is_symlink(shared_ / name));
  }
}

TEST_F(ExtractSplashForElevation, ShowsNothingWhereAFileCannotBeReplaced) {
  writeFile(shared_ / "nativesplash.png/inside", "a folder, which no file can replace");
  const StreamOf stream(fileEntry("lzma64", "tool") + fileEntry("nativesplash.png", "picture"));
  const ExtractionResult result =
      extractSplashForElevation({stream.get(), nullptr}, {}, shared_.str());
  EXPECT_EQ(result.end, ExtractionEnd::kFileNotCreated);
  EXPECT_EQ(exitStatusOf(result), kExitFailure);
  EXPECT_TRUE(
      log_.contains("Unable to extract archive file nativesplash.png (7), unable to open "
                    "file for writing\n"));
  EXPECT_FALSE(log_.contains("[Extractor] Configuring splash\n"));
}

class DoElevatedSetupAndLaunch : public ::testing::Test {
 protected:
  DoElevatedSetupAndLaunch() : bundle_(kRecorder) { bundle_.writeScript(tool_, kRecorder); }

  Ended elevate(std::vector<std::string> arguments, bool isSilent = false) {
    arguments.insert(arguments.begin(), "launcher");
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    return inChild([&] {
      doElevatedSetupAndLaunch("My App", static_cast<int>(argv.size()), argv.data(), isSilent,
                               bundle_.executable());
    });
  }

  TestBundle bundle_;
  const std::string tool_ = bundle_.executable().resource("elev_mac");
};

TEST_F(DoElevatedSetupAndLaunch, RunsTheToolThenItself) {
  const Ended ended = elevate({"-x", "two words", "", "$HOME \"q\""});
  EXPECT_EQ(ended.status, kReturned);
  EXPECT_EQ(readFile(tool_ + ".arguments"),
            "<--prompt=My App>\n<" + bundle_.exePath() +
                ">\n<-x>\n<two words>\n<>\n<$HOME \"q\">\n<QYPREPARE_FOR_LAUNCH_ONLY>\n");
  EXPECT_EQ(readFile(bundle_.exePath() + ".arguments"), "<-x>\n<two words>\n<>\n<$HOME \"q\">\n");
}

// The copy that starts the application would never hear of them.
TEST_F(DoElevatedSetupAndLaunch, HandsTheOpenedFilesToTheCopyThatStartsTheApplication) {
  forgetOpenedFiles();
  openFile("/tmp/a document");
  const ScopedReplace leaveDock(
      platformCalls.presence.leaveDock, +[] { logToSystem("left the Dock\n"); });
  const Ended ended = elevate({"-x"});
  EXPECT_EQ(readFile(bundle_.exePath() + ".arguments"), "<-x>\n</tmp/a document>\n");
  EXPECT_THAT(readFile(tool_ + ".arguments"), Not(HasSubstr("document")));
  EXPECT_LT(ended.log.find("Launching elevated setup"), ended.log.find("left the Dock"));
  EXPECT_LT(ended.log.find("left the Dock"), ended.log.find("[SUDO] Relaunch complete"));
  forgetOpenedFiles();
}

// The last one tells the copy with the administrator's rights not to start the application.
TEST_F(DoElevatedSetupAndLaunch, HandsOnAnyNumberOfArguments) {
  for (const std::size_t count : {496u, 497u, 600u, 2000u}) {
    SCOPED_TRACE(count);
    std::string own;
    for (std::size_t i = 0; i < count; ++i) own += "<x>\n";
    EXPECT_EQ(elevate(std::vector<std::string>(count, "x")).status, kReturned);
    EXPECT_EQ(readFile(tool_ + ".arguments"), "<--prompt=My App>\n<" + bundle_.exePath() + ">\n" +
                                                  own + "<QYPREPARE_FOR_LAUNCH_ONLY>\n");
    EXPECT_EQ(readFile(bundle_.exePath() + ".arguments"), own);
  }
}

TEST_F(DoElevatedSetupAndLaunch, RelaunchesWithoutArgumentsWhereThereWereNone) {
  EXPECT_EQ(elevate({}).status, kReturned);
  EXPECT_EQ(readFile(tool_ + ".arguments"),
            "<--prompt=My App>\n<" + bundle_.exePath() + ">\n<QYPREPARE_FOR_LAUNCH_ONLY>\n");
  EXPECT_EQ(readFile(bundle_.exePath() + ".arguments"), "");
}

TEST_F(DoElevatedSetupAndLaunch, LogsItsStepsInOrder) {
  const Ended ended = elevate({"a"});
  const std::string rule = "[SUDO] ==============================================\n";
  std::size_t position = 0;
  for (const std::string& line :
       {std::string("[SUDO] Elevation required.\n"
                    "[SUDO] On OS X, UI-based elevation utility is required. Using bundled "
                    "'elev_mac'\n"
                    "[SUDO] Elev_mac path is ") +
            tool_ + "\n",
        "[Spawner] Appended argument QYPREPARE_FOR_LAUNCH_ONLY\n" + rule +
            "[SUDO] ======      Launching elevated setup    ======\n" + rule + "ShowSplash",
        std::string("HideSplash"),
        std::string("[SUDO] Elevated setup complete\n[SUDO] Elevated setup complete\n"),
        "[Spawner] Appended argument a\n" + rule +
            "[SUDO] ======      Relaunching post setup      ======\n" + rule,
        std::string("[SUDO] Relaunch complete\n")}) {
    const std::size_t found = ended.log.find(line, position);
    ASSERT_NE(found, std::string::npos) << "missing: " << line << "\nin:\n" << ended.log;
    position = found + line.size();
  }
}

TEST_F(DoElevatedSetupAndLaunch, NeverShowsTheSplashInASilentRun) {
  const Ended ended = elevate({"a"}, true);
  EXPECT_EQ(ended.status, kReturned);
  EXPECT_FALSE(ended.logs("ShowSplash"));
  EXPECT_FALSE(ended.logs("HideSplash"));
  EXPECT_TRUE(fs::exists(tool_ + ".arguments"));
}

TEST_F(DoElevatedSetupAndLaunch, SaysWhenTheToolIsMissingAndRelaunches) {
  fs::remove(tool_);
  const Ended ended = elevate({});
  EXPECT_EQ(ended.status, kReturned);
  EXPECT_TRUE(ended.logs("Launch Error 2.\n"));
  EXPECT_TRUE(ended.logs("[SUDO] elev_mac could not be started: nothing has been installed\n"));
  EXPECT_TRUE(fs::exists(bundle_.exePath() + ".arguments"));
}

TEST_F(DoElevatedSetupAndLaunch, SaysWhenTheToolIsNotExecutable) {
  chmod(tool_.c_str(), 0644);
  const Ended ended = elevate({});
  EXPECT_EQ(ended.status, kReturned);
  EXPECT_TRUE(ended.logs("Launch Error 13.\n"));
  EXPECT_TRUE(ended.logs("[SUDO] elev_mac could not be started: nothing has been installed\n"));
}

TEST_F(DoElevatedSetupAndLaunch, SaysWhenElevationWasDenied) {
  bundle_.writeScript(tool_, "#!/bin/sh\nexit 126\n");
  const Ended ended = elevate({});
  EXPECT_EQ(ended.status, kReturned);
  EXPECT_TRUE(ended.logs(
      "[SUDO] elev_mac ended with status 126: elevation was denied, or set-up failed\n"));
  EXPECT_TRUE(fs::exists(bundle_.exePath() + ".arguments"));
}

}  // namespace
}  // namespace quillory::testing
