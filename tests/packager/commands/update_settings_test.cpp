#include "packager/commands/update_settings.h"

#include <gtest/gtest.h>

#include "packager/keys/public_key.h"
#include "tests/harness/records.h"
#include "tests/packager/hello_config.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

class UpdateSettingsOf : public testing::HelloConfig {};

TEST_F(UpdateSettingsOf, AreThoseOfTheConfigurationInTheOrderOfTheFormat) {
  config_.update.channel = "beta";
  config_.update.mode = UpdateMode::kAtStart;
  config_.update.atStartSeconds = 7;
  config_.update.checkHours = 12;
  config_.update.keepVersions = 3;
  config_.update.mirrors = {"https://one.example/", "https://two.example/"};
  const std::string key = PublicKey::load(testing::madeKey()).hex();
  const UpdateKeys keys{SigningKey::load(testing::madeKey()), std::nullopt, {}, {key, "3003"}};
  EXPECT_EQ(updateSettingsOf(config_, keys),
            testing::records({"1", "beta", "at-start", "7", "12", "3", "2", "https://one.example/",
                              "https://two.example/", "2", key, "3003"}));
}

TEST_F(UpdateSettingsOf, TellTheAdministratorOfAllUsersWhatAStartWouldSay) {
  config_.update.url = "https://app.example/";
  config_.runtime.name = "My JRE";
  const UpdateKeys keys{SigningKey::load(testing::madeKey()), std::nullopt, {}, {"3003"}};
  const std::string forOne = updateSettingsOf(config_, keys);
  config_.install.type = "perm_all";
  EXPECT_EQ(updateSettingsOf(config_, keys),
            forOne + testing::records({"https://app.example/", "My JRE"}));
  // A dynamic one that is not yet known.
  config_.update.url = "";
  EXPECT_EQ(updateSettingsOf(config_, keys), forOne);
}

}  // namespace
}  // namespace quillory::pack
