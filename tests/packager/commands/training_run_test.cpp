#include "packager/commands/training_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using testing::TempDir;

const std::vector<std::string> kBegin = {"/bin/sh", "-c", "exec \"$@\" >&2", "sh", "/usr/bin/env"};

LaunchFile launchFile() {
  LaunchFile launch;
  launch.mainClass = "com.example.Main";
  launch.classPath = {"lib/a.jar", "lib/b.jar"};
  launch.arguments = {"--packed"};
  launch.jvmOptions = {"-Dquillory.arguments=user"};
  return launch;
}

// What stands behind the words that begin every such command.
std::vector<std::string> commandOf(const LaunchFile& launch, const std::string& folder = "/app") {
  const std::vector<std::string> all =
      trainingCommand(launch, {"/jre", folder}, "/list", "/properties", {"a b", "-c"});
  EXPECT_TRUE(std::equal(kBegin.begin(), kBegin.end(), all.begin()));
  return {all.begin() + static_cast<long>(kBegin.size()), all.end()};
}

TEST(TrainingCommand, StartsTheApplicationAsItIsPacked) {
  EXPECT_THAT(commandOf(launchFile()), ElementsAre("/jre/bin/java", "-XX:DumpLoadedClassList=/list",
                                                   "-cp", "/app/lib/a.jar:/app/lib/b.jar",
                                                   "com.example.Main", "--packed", "a b", "-c"));
}

TEST(TrainingCommand, HasWhatItsLaunchFileSetsBeforeTheMainClass) {
  LaunchFile launch = launchFile();
  launch.maximumHeap = 512;
  launch.initialHeap = 64;
  launch.jvmOptions = {"-Dquillory.environment.NAME=a b", "-Dquillory.startup.archive=true",
                       "-Dmy.key=value", "-Dquillory.instance=single"};
  EXPECT_THAT(commandOf(launch),
              ElementsAre("NAME=a b", "/jre/bin/java", "-XX:DumpLoadedClassList=/list", "-Xmx512m",
                          "-Xms64m", "-Dmy.key=value", "-cp", "/app/lib/a.jar:/app/lib/b.jar",
                          "com.example.Main", "/properties", "--packed", "a b", "-c"));
}

TEST(TrainingCommand, StartsAModule) {
  LaunchFile launch = launchFile();
  launch.jvmOptions = {"-Dquillory.arguments=user", "-Dquillory.module=com.example"};
  EXPECT_THAT(commandOf(launch),
              ElementsAre("/jre/bin/java", "-XX:DumpLoadedClassList=/list", "-p",
                          "/app/lib/a.jar:/app/lib/b.jar", "-m", "com.example/com.example.Main",
                          "--packed", "a b", "-c"));
}

TEST(TrainingCommand, FindsNativeLibrariesOfTheApplication) {
  TempDir dir;
  std::filesystem::create_directory(dir / "native");
  EXPECT_THAT(commandOf(launchFile(), dir.str()),
              Contains("-Djava.library.path=" + dir.str() +
                       "/native:/usr/java/packages/lib:/usr/lib64:/lib64:/lib:/usr/lib"));
}

TEST(TrainingFolder, IsTheOneOfItsConfiguration) {
  LaunchFile launch = launchFile();
  EXPECT_EQ(trainingFolder(launch, {"/jre", "/app"}), "");
  launch.jvmOptions = {"-Dquillory.directory=application"};
  EXPECT_EQ(trainingFolder(launch, {"/jre", "/app"}), "/app");
  launch.jvmOptions = {"-Dquillory.directory=home"};
  EXPECT_EQ(trainingFolder(launch, {"/jre", "/app"}), std::getenv("HOME"));
}

}  // namespace
}  // namespace quillory::pack
