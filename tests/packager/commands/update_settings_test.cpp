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

}  // namespace
}  // namespace quillory::pack
