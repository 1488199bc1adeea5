#include "java/startup_archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "tests/harness/records.h"
#include "tests/java/launch_fixture.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using ::quillory::testing::records;
using ::quillory::testing::writeFile;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class StartupArchive : public ::testing::Test {
 protected:
  StartupArchive() {
    writeFile(home_ + "/release", "IMPLEMENTOR=\"x\"\nJAVA_VERSION=\"17.0.9\"\n");
    writeFile(home_ + "/lib/modules", "modules");
    writeFile(jar_, "jar");
  }
  std::vector<std::string> options(const std::vector<std::string>& given = {}) {
    LaunchCommand command;
    command.jvmOptions = given;
    command.classPath = {jar_};
    addStartupArchive({.folder = folder_,
                       .javaHome = home_,
                       .applicationFolder = dir_ / "Quillory-Demo-1-complete"},
                      command);
    command.jvmOptions.erase(command.jvmOptions.begin(),
                             command.jvmOptions.begin() + static_cast<long>(given.size()));
    return command.jvmOptions;
  }
  // As the updater makes one for the start that these options are of.
  void makeArchive(const std::vector<std::string>& listing) {
    const std::string key = "-Dquillory.archive.fingerprint=";
    writeFile(base_ + ".jsa", "archive");
    struct stat status;
    stat((base_ + ".jsa").c_str(), &status);
    writeFile(base_ + ".guard", records({"1", listing.at(2).substr(key.size()), "7",
                                         std::to_string(status.st_mtime)}));
  }

  testing::TempDir dir_;
  testing::CapturedLog log_;
  std::string home_ = dir_ / "home";
  std::string jar_ = dir_ / "a.jar";
  std::string folder_ = dir_ / "QYApps";
  std::string base_ = folder_ + "/StartupArchive-Quillory-Demo-1-complete";
};

TEST_F(StartupArchive, IsAskedForWhereThereIsNone) {
  EXPECT_THAT(options(), ElementsAre("-XX:DumpLoadedClassList=" + base_ + ".classes",
                                     "-Dquillory.archive.base=" + base_,
                                     StartsWith("-Dquillory.archive.fingerprint=")));
  EXPECT_TRUE(fs::is_directory(folder_));
  EXPECT_EQ(options(), options()) << "the same for the same";
}

// A JVM that was given other modules or an agent would refuse such an archive in five lines.
TEST_F(StartupArchive, MayHaveLinkedClassesWhereTheOptionsAllowIt) {
  const std::string linked = "-Dquillory.archive.linked=true";
  EXPECT_THAT(options(), Not(Contains(linked))) << "Java 17 cannot";
  writeFile(home_ + "/release", "JAVA_VERSION=\"23.0.2\"\n");
  EXPECT_THAT(options(), Not(Contains(linked)));
  writeFile(home_ + "/release", "JAVA_VERSION=\"24.0.1\"\n");
  EXPECT_THAT(options(), Contains(linked));
  EXPECT_THAT(options({"-Xmx200m", "-Da=b", "-XX:+UseSerialGC"}), Contains(linked));
  for (const char* option :
       {"--add-opens=java.base/java.lang=ALL-UNNAMED", "--add-modules=java.sql", "-javaagent:a.jar",
        "-agentlib:jdwp", "-agentpath:/a", "-Xrunjdwp", "-Djava.system.class.loader=a.B"})
    EXPECT_THAT(options({"-Xmx200m", option}), Not(Contains(linked))) << option;
}

TEST_F(StartupArchive, IsUsedAndTheStartCounted) {
  makeArchive(options());
  EXPECT_THAT(options(), ElementsAre("-XX:SharedArchiveFile=" + base_ + ".jsa", "-Xshare:auto",
                                     "-Dquillory.archive.tries=" + base_ + ".tries"));
  EXPECT_EQ(fs::file_size(base_ + ".tries"), 1u);
}

TEST_F(StartupArchive, IsNotUsedAgainAfterTwoBadStarts) {
  makeArchive(options());
  options();
  options();
  EXPECT_THAT(options(), IsEmpty());
  EXPECT_THAT(log_.text(), ::testing::HasSubstr("Two starts with the startup archive have failed"));
  fs::remove(base_ + ".tries");
  EXPECT_THAT(options(), Contains("-Xshare:auto"));
}

TEST_F(StartupArchive, IsNotUsedWhenItWasCutOrReplaced) {
  const std::vector<std::string> listing = options();
  makeArchive(listing);
  fs::resize_file(base_ + ".jsa", 6);
  EXPECT_EQ(options(), listing);
  makeArchive(listing);
  fs::last_write_time(base_ + ".jsa",
                      fs::last_write_time(base_ + ".jsa") - std::chrono::seconds(5));
  EXPECT_EQ(options(), listing);
  makeArchive(listing);
  fs::remove(base_ + ".jsa");
  EXPECT_EQ(options(), listing);
  fs::create_directory(base_ + ".jsa");
  EXPECT_EQ(options(), listing);
  EXPECT_FALSE(fs::exists(base_ + ".tries"));
}

TEST_F(StartupArchive, IsNotUsedForOtherFilesOrOptions) {
  makeArchive(options());
  EXPECT_THAT(options({"-Xss2m"}), Not(Contains("-Xshare:auto")));
  writeFile(jar_, "another jar");
  EXPECT_THAT(options(), Not(Contains("-Xshare:auto")));
  writeFile(jar_, "jar");
  fs::last_write_time(jar_, fs::last_write_time(jar_) - std::chrono::seconds(5));
  EXPECT_THAT(options(), Not(Contains("-Xshare:auto")));
}

TEST_F(StartupArchive, IsNotUsedForAnotherRuntime) {
  makeArchive(options());
  writeFile(home_ + "/lib/modules", "other modules");
  EXPECT_THAT(options(), Not(Contains("-Xshare:auto")));
}

TEST_F(StartupArchive, IsNotAskedForAgainWhereNoneCouldBeMade) {
  const std::string key = "-Dquillory.archive.fingerprint=";
  const std::string fingerprint = options().at(2).substr(key.size());
  writeFile(base_ + ".guard", records({"1", fingerprint, "0", "0"}));
  EXPECT_THAT(options(), IsEmpty());
  writeFile(base_ + ".guard", "1");
  EXPECT_THAT(options(), Contains(StartsWith("-XX:DumpLoadedClassList"))) << "a damaged one";
}

TEST_F(StartupArchive, NeedsJava13AndAPlaceToBeTrusted) {
  writeFile(home_ + "/release", "JAVA_VERSION=\"11.0.2\"\n");
  EXPECT_THAT(options(), IsEmpty());
  writeFile(home_ + "/release", "JAVA_VERSION=\"13\"\n");
  EXPECT_THAT(options(), Not(IsEmpty()));
  folder_ = "";
  EXPECT_THAT(options(), IsEmpty());
}

TEST_F(StartupArchive, WithoutAFolderItIsDoneWithout) {
  writeFile(dir_ / "file", "");
  folder_ = dir_ / "file/QYApps";
  EXPECT_THAT(options(), IsEmpty());
}

}  // namespace
}  // namespace quillory
