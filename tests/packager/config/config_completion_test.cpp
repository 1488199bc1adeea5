#include "packager/config/config_completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Config written() {
  Config config;
  config.file = "/project/quillory.toml";
  config.folder = "/project";
  config.application.name = "My App 2!";
  config.application.version = 12;
  return config;
}

TEST(Completed, HasNamesThatFollowFromTheApplications) {
  const Config config = completed(written());
  EXPECT_EQ(config.application.executable, "MyApp2");
  EXPECT_EQ(config.application.displayVersion, "12");
  EXPECT_EQ(config.application.identifier, "local.MyApp2");
  EXPECT_THAT(config.filledIn, ElementsAre("application.identifier"));
}

TEST(Completed, KeepsWhatIsWritten) {
  Config config = written();
  config.application.executable = "run";
  config.application.displayVersion = "1.2";
  config.application.identifier = "com.example.run";
  config.update.urlKind = UpdateUrlKind::kStatic;
  config.update.url = "https://example.com/";
  const Config same = completed(config);
  EXPECT_EQ(same.application.executable, "run");
  EXPECT_EQ(same.application.displayVersion, "1.2");
  EXPECT_EQ(same.application.identifier, "com.example.run");
  EXPECT_EQ(same.update.url, "https://example.com/");
  EXPECT_THAT(same.filledIn, IsEmpty());
}

TEST(Completed, HasAUrlThatStandsForNoUpdatesWhenTheyAreOff) {
  EXPECT_EQ(completed(written()).update.url, "http://no.invalid/");
}

TEST(Completed, HasPathsOfTheRuntimesToolsFromTheFolderOfTheFile) {
  Config config = written();
  EXPECT_EQ(completed(config).runtime.jdk, "");
  config.runtime.jdk = "jdk";
  config.runtime.jmods = "/elsewhere/jmods";
  EXPECT_EQ(completed(config).runtime.jdk, "/project/jdk");
  EXPECT_EQ(completed(config).runtime.jmods, "/elsewhere/jmods");
}

TEST(Completed, HasTheFileOfAClassListFromThere) {
  Config config = written();
  for (const auto& [given, expected] :
       {std::pair{"auto", "auto"}, std::pair{"none", "none"}, std::pair{"", ""},
        std::pair{"ours.list", "/project/ours.list"}, std::pair{"./auto", "/project/./auto"}}) {
    config.runtime.classList = given;
    EXPECT_EQ(completed(config).runtime.classList, expected);
  }
}

}  // namespace
}  // namespace quillory::pack
