#include "launcher/bundle_paths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/captured_log.h"

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;

TEST(LocateExecutable, TakesAnAbsolutePathAsItIs) {
  char path[] = "/Applications/X.app/Contents/MacOS/x";
  const CapturedLog log;
  const Executable exe = locateExecutable(path);
  EXPECT_EQ(exe.pathAsPassed, path);
  EXPECT_EQ(exe.absolutePath, path);
  EXPECT_EQ(exe.folder, "/Applications/X.app/Contents/MacOS");
  EXPECT_THAT(
      log.messages(),
      ElementsAre("[Extractor] The absolute wrapper path is /Applications/X.app/Contents/MacOS/x\n",
                  "[Extractor] The executable name is /Applications/X.app/Contents/MacOS/x\n",
                  "[Extractor] The executable dir is /Applications/X.app/Contents/MacOS\n"));
}

TEST(LocateExecutable, PutsTheWorkingFolderBeforeARelativePath) {
  char path[] = "MacOS/x";
  const std::string here = std::filesystem::current_path().string();
  const Executable exe = locateExecutable(path);
  EXPECT_EQ(exe.pathAsPassed, "MacOS/x");
  EXPECT_EQ(exe.absolutePath, here + "/MacOS/x");
  EXPECT_EQ(exe.folder, here + "/MacOS");
}

TEST(Executable, FindsResourcesBesideItsFolder) {
  Executable exe;
  exe.folder = "/A.app/Contents/MacOS";
  EXPECT_EQ(exe.resource("Tail"), "/A.app/Contents/MacOS/../Resources/Tail");
  EXPECT_EQ(exe.resource("a.lproj", "b"), "/A.app/Contents/MacOS/../Resources/a.lproj/b");
}

TEST(Executable, FindsResourcesFromTheRootFolder) {
  char path[] = "/x";
  EXPECT_EQ(locateExecutable(path).resource("Tail"), "/../Resources/Tail");
}

}  // namespace
}  // namespace quillory::testing
