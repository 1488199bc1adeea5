#include "java/app_executable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "support/durable.h"
#include "support/file_modes.h"
#include "support/folder_listing.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using ::quillory::testing::CapturedLog;
using ::quillory::testing::FileSizeLimit;
using ::quillory::testing::modeOf;
using ::quillory::testing::readFile;
using ::quillory::testing::ScopedReplace;
using ::quillory::testing::TempDir;
using ::quillory::testing::writeFile;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class ProvideAppExecutable : public ::testing::Test {
 protected:
  ProvideAppExecutable() {
    writeFile(java_, "the java of the runtime");
    chmod(java_.c_str(), 0700);
  }

  TempDir dir_;
  std::string bin_ = dir_ / "bin";
  std::string java_ = bin_ + "/java";
};

TEST_F(ProvideAppExecutable, CopiesJavaForEveryone) {
  const CapturedLog log;
  EXPECT_EQ(provideAppExecutable(bin_, "My App"), bin_ + "/My App");
  EXPECT_EQ(readFile(bin_ + "/My App"), "the java of the runtime");
  EXPECT_EQ(modeOf(bin_ + "/My App"), 0777U);
  EXPECT_THAT(namesIn(bin_), UnorderedElementsAre("java", "My App"));
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Copying FILE " + bin_ + "/My App\n"));
}

TEST_F(ProvideAppExecutable, GivesFullModeWhateverTheUmask) {
  const mode_t before = umask(0077);
  provideAppExecutable(bin_, "app");
  umask(before);
  EXPECT_EQ(modeOf(bin_ + "/app"), 0777U);
}

TEST_F(ProvideAppExecutable, KeepsACopyThatIsThere) {
  writeFile(bin_ + "/app", "made before");
  const CapturedLog log;
  EXPECT_EQ(provideAppExecutable(bin_, "app"), bin_ + "/app");
  EXPECT_EQ(readFile(bin_ + "/app"), "made before");
  EXPECT_FALSE(log.contains("Copying"));
}

TEST_F(ProvideAppExecutable, LeavesNothingWhenThereIsNoJava) {
  fs::remove(java_);
  const CapturedLog log;
  EXPECT_EQ(provideAppExecutable(bin_, "app"), bin_ + "/app");
  EXPECT_THAT(namesIn(bin_), IsEmpty());
  EXPECT_THAT(log.messages(),
              Contains("[Extractor] *************************** Unable to open source file for "
                       "copy " +
                       java_ + "\n"));
  EXPECT_THAT(log.messages(), Contains("Error setting app binary executable!\n"));
}

TEST_F(ProvideAppExecutable, LeavesNothingWhenJavaCannotBeCopied) {
  fs::remove(java_);
  fs::create_directory(java_);
  const CapturedLog log;
  EXPECT_EQ(provideAppExecutable(bin_, "app"), bin_ + "/app");
  EXPECT_THAT(namesIn(bin_), ElementsAre("java"));
  EXPECT_THAT(log.messages(),
              Contains("[Extractor] *************************** Unable to open destination file "
                       "for copy " +
                       bin_ + "/app\n"));
}

TEST_F(ProvideAppExecutable, LeavesNoPartOfACopyOnAFullDisk) {
  writeFile(java_, std::string(300'000, 'x'));
  const CapturedLog log;
  {
    const FileSizeLimit limit(200'000);
    provideAppExecutable(bin_, "app");
  }
  EXPECT_THAT(namesIn(bin_), ElementsAre("java"));
  EXPECT_THAT(log.messages(), Contains("Error setting app binary executable!\n"));
}

TEST_F(ProvideAppExecutable, SaysBothLinesWhenOnlyTheNameCannotBeGiven) {
  const ScopedReplace failingDisk(
      durableCalls.flushFile, +[](int, const std::string&) { return EIO; });
  const CapturedLog log;
  EXPECT_EQ(provideAppExecutable(bin_, "app"), bin_ + "/app");
  EXPECT_THAT(namesIn(bin_), ElementsAre("java"));
  EXPECT_THAT(log.messages(),
              Contains("[Extractor] *************************** Unable to open destination file "
                       "for copy " +
                       bin_ + "/app\n"));
  EXPECT_THAT(log.messages(), Contains("Error setting app binary executable!\n"));
}

TEST_F(ProvideAppExecutable, ReplacesALinkThatLeadsNowhere) {
  fs::create_symlink(dir_ / "outside", bin_ + "/app");
  provideAppExecutable(bin_, "app");
  EXPECT_FALSE(fs::is_symlink(bin_ + "/app"));
  EXPECT_EQ(readFile(bin_ + "/app"), "the java of the runtime");
  EXPECT_FALSE(fs::exists(dir_ / "outside"));
}

TEST_F(ProvideAppExecutable, UsesJavaItselfForWhatIsNoFileName) {
  const std::string outside = dir_ / "outside";
  for (const std::string name : {"", ".", "..", "/", "../outside", "sub/app", outside.c_str()}) {
    SCOPED_TRACE(name);
    const CapturedLog log;
    EXPECT_EQ(provideAppExecutable(bin_, name), java_);
    EXPECT_TRUE(
        log.contains("[Extractor] App Name '" + name + "' is no file name. Using " + java_ + "\n"));
  }
  EXPECT_THAT(namesIn(bin_), ElementsAre("java"));
  EXPECT_THAT(namesIn(dir_.str()), ElementsAre("bin"));
}

TEST_F(ProvideAppExecutable, FailsForANameThatIsTooLong) {
  const std::string name(300, 'x');
  EXPECT_EQ(provideAppExecutable(bin_, name), bin_ + "/" + name);
  EXPECT_THAT(namesIn(bin_), ElementsAre("java"));
}

// Only the administrator writes there, who has made the copy if he could.
TEST_F(ProvideAppExecutable, IsJavaItselfWhereOnlyTrustedFoldersAreUsedAndNoCopyCanBeMade) {
  const CapturedLog log;
  const std::string gone = dir_ / "gone";
  chooseInstallationModes(InstallationModes::kOnlyTrustedAreUsed);
  EXPECT_EQ(provideAppExecutable(gone, "demo"), gone + "/java");
  chooseInstallationModes(InstallationModes::kOpenToAll);
  EXPECT_EQ(provideAppExecutable(gone, "demo"), gone + "/demo");
}

}  // namespace
}  // namespace quillory
