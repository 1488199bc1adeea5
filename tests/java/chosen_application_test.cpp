#include "java/chosen_application.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "install/install_locations.h"
#include "java/library_path.h"
#include "tests/java/launch_fixture.h"

namespace quillory {
namespace {

using ::quillory::testing::LaunchFileText;
using ::quillory::testing::writeFile;
using ::testing::ElementsAre;

class ChosenApplication : public ::testing::Test {
 protected:
  std::string install(int version, const std::vector<std::string>& options) {
    const std::string folder = dir_ / ("Quillory-Demo-" + std::to_string(version) + "-complete");
    writeFile(folder + "/QuilloryLaunch",
              LaunchFileText{.classPath = {"a.jar"}, .options = options}.bytes());
    return folder;
  }
  // As it is when the updater's launch file has been read.
  LaunchCommand commandWith(const std::vector<std::string>& remembered) {
    LaunchCommand command;
    addMemoryOptions(256, 0, command);
    setClassPath(dir_ / "Quillory-Quillory-1-complete", {"updater.jar"}, command);
    command.jvmOptions.insert(command.jvmOptions.end(), remembered.begin(), remembered.end());
    addChosenApplication(dir_.str(), "Demo", command);
    return command;
  }

  testing::TempDir dir_;
  testing::CapturedLog log_;
  std::string updater_ = dir_ / "Quillory-Quillory-1-complete/updater.jar";
};

TEST_F(ChosenApplication, IsTheNewestOneBehindTheUpdaterAndBeforeWhatIsRemembered) {
  install(9, {"-Dold"});
  const std::string folder =
      install(12, {"-Dquillory.arguments=user", "--add-exports=a/b=ALL-UNNAMED", "-Dx=y"});
  const LaunchCommand command = commandWith({"-Dremembered"});
  EXPECT_THAT(command.classPath, ElementsAre(updater_, folder + "/a.jar"));
  EXPECT_EQ(command.classPathText, updater_ + ":" + folder + "/a.jar");
  EXPECT_THAT(command.jvmOptions,
              ElementsAre("-Xmx256m", "-Dquillory.application=" + folder,
                          "--add-exports=a/b=ALL-UNNAMED", "-Dx=y", "-Dremembered"));
}

TEST_F(ChosenApplication, IsNotOneThatTheUpdaterPassesOver) {
  install(3, {});
  install(2, {});
  const std::string folder = install(1, {});
  const std::string option =
      "-Dquillory.passed.over=Quillory-Demo-3-complete/Quillory-Demo-2-complete";
  EXPECT_THAT(commandWith({option}).jvmOptions,
              ElementsAre("-Xmx256m", "-Dquillory.application=" + folder, option));
}

TEST_F(ChosenApplication, WhereThereIsNoneTheUpdaterIsToldSo) {
  const LaunchCommand command = commandWith({});
  EXPECT_THAT(command.classPath, ElementsAre(updater_));
  EXPECT_THAT(command.jvmOptions, ElementsAre("-Xmx256m", "-Dquillory.application="));
  std::filesystem::create_directories(dir_ / "Quillory-Demo-1-complete");
  EXPECT_THAT(commandWith({}).jvmOptions, ElementsAre("-Xmx256m", "-Dquillory.application="))
      << "a folder without a launch file";
}

TEST_F(ChosenApplication, OfAModuleStandsOnTheModulePath) {
  const std::string folder = install(1, {"-Dquillory.module=m.app", "--add-opens=m.app/p=ALL"});
  const LaunchCommand command = commandWith({});
  EXPECT_THAT(command.classPath, ElementsAre(updater_));
  EXPECT_THAT(command.jvmOptions,
              ElementsAre("-Xmx256m", "-Dquillory.application=" + folder, "--add-opens=m.app/p=ALL",
                          "--module-path=" + folder + "/a.jar", "--add-modules=m.app"));
}

TEST_F(ChosenApplication, ItsNativeLibrariesAreFoundBeforeThoseOfTheSystem) {
  const std::string folder = install(1, {});
  std::filesystem::create_directories(folder + "/native");
  const std::string path = "-Djava.library.path=" + folder + "/native:" + standardLibraryPath();
  EXPECT_THAT(commandWith({}).jvmOptions,
              ElementsAre("-Xmx256m", "-Dquillory.application=" + folder, path));
  install(1, {"-Djava.library.path=/own"});
  EXPECT_THAT(
      commandWith({}).jvmOptions,
      ElementsAre("-Xmx256m", "-Dquillory.application=" + folder, "-Djava.library.path=/own"));
}

TEST(StandardLibraryPath, BeginsWithTheUsersAndHasTheSystems) {
  EXPECT_NE(standardLibraryPath().find("/usr/lib"), std::string::npos);
}

TEST_F(ChosenApplication, SaysWhatItsProcessIsToBeLike) {
  const std::string folder =
      install(1, {"-Dquillory.environment.A=1=2",
                  "-Dquillory.environment.EMPTY=", "-Dquillory.environment.=x",
                  "-Dquillory.environment.B", "-Dquillory.directory=application"});
  const LaunchCommand command = commandWith({});
  EXPECT_THAT(command.environment, ElementsAre("A=1=2", "EMPTY="));
  EXPECT_EQ(command.directory, folder);
  install(1, {"-Dquillory.directory=elsewhere"});
  EXPECT_EQ(commandWith({}).directory, "");
  install(1, {"-Dquillory.directory=home"});
  EXPECT_EQ(commandWith({}).directory, homeFolderOfUser());
}

}  // namespace
}  // namespace quillory
