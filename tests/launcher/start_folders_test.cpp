#include "launcher/start_folders.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "launcher/driver.h"
#include "support/exit_status.h"
#include "tests/launcher/whole_start.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

class EnterMasterFolder : public WholeStart {};

/// Whether others may write, with a umask that would let them.
std::vector<std::string> openToOthers(const std::string& folder) {
  std::vector<std::string> found;
  const auto look = [&found](const fs::path& path) {
    const bool isOpen = (modeOf(path) & 022) != 0;
    if (isOpen && !fs::is_symlink(path)) found.push_back(path);
  };
  look(folder);
  for (const auto& entry : fs::recursive_directory_iterator(folder)) look(entry.path());
  return found;
}

TEST_F(EnterMasterFolder, LeavesWritingToTheOwnerInAHardenedInstallation) {
  writeParams({{"jre_name", "jre"}, {"force_spawn", "true"}, {"hardened", "true"}});
  const mode_t before = umask(0);
  const Ended ended = start({}, true);
  umask(before);
  EXPECT_TRUE(fs::exists(installed("logs")));
  EXPECT_EQ(openToOthers(master_), std::vector<std::string>()) << ended.log;
  EXPECT_NE(ended.log.find("[ChMod] Executing chmod 755 \"" + master_ + "/logs\"\n"),
            std::string::npos);
}

TEST_F(EnterMasterFolder, OpensFoldersToEveryUserWithoutThatParameter) {
  start();
  for (const char* folder : {"", "logs", "QYAppsSharedConfig", "Quillory-Quillory-7-complete",
                             "Quillory-Demo-3-complete", "Quillory-jre-17-complete",
                             "Quillory-jre-17-complete/bin", "Quillory-jre-17-complete.plugin"})
    EXPECT_EQ(modeOf(installed(folder)), 0777U) << folder;
}

TEST_F(EnterMasterFolder, LogsIntoTheMasterFolder) {
  start();
  started();
  int count = 0;
  for (const auto& entry : fs::directory_iterator(master_ + "/logs")) {
    ++count;
    EXPECT_NE(readFile(entry.path()).find("[Extractor] Checking for a latest valid GU\n"),
              std::string::npos);
  }
  EXPECT_EQ(count, 1);
}

TEST_F(EnterMasterFolder, FindsTheJreUnderTheOverridingName) {
  writeFile(installed("QYApps/JreNameOverride"), records({"own"}));
  EXPECT_EQ(start().status, kExitSuccess);
  EXPECT_TRUE(fs::exists(installed("Quillory-own-17-complete/bin/java")));
  EXPECT_NE(started(), "");
}

TEST_F(EnterMasterFolder, RefusesNamesThatLeadOutOfTheSharedDirectory) {
  TailText tail = offlineTail();
  tail.appName = "x/../../../escaped";
  writeTail(tail, "");
  EXPECT_EQ(start().status, kExitFailure);
  EXPECT_TRUE(fs::is_empty(home_.path()));

  writeParams({{"jre_name", "x/../../escaped"}});
  writeTail(offlineTail(), updaterEntries("First") + jreEntry() + appEntries("hello"));
  const Ended ended = start();
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("The JRE name 'x/../../escaped'"));
  EXPECT_FALSE(fs::exists(installed("Quillory-Quillory-7-complete")));
}

TEST_F(EnterMasterFolder, EndsWithoutASharedDirectory) {
  const Ended ended = inChild([&] {
    std::string path = bundle_.exePath();
    char* argv[] = {path.data()};
    runStart(argv[0], {0, argv + 1, 1, argv, false}, {.homeFolder = [] { return std::string(); }});
  });
  EXPECT_EQ(ended.status, kExitFailure);
  EXPECT_TRUE(ended.logs("ERROR: Unable to get shared dir!"));
}

}  // namespace
}  // namespace quillory::testing
