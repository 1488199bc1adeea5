#include "update/settings_in_force.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/update/machine.h"

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using update::settingsInForce;
using update::SettingsInForce;

class SettingsInForceTest : public ::testing::Test {
 protected:
  SettingsInForce inForce(const std::string& chosenChannel = "") {
    return settingsInForce(machine_.installation(), chosenChannel, machine_.administrators);
  }
  void administratorSays(const std::string& text) {
    writeFile(machine_.administrators + "/Demo.conf", text);
  }

  ReleaseFolder releases_;
  Machine machine_{releases_};
};

TEST_F(SettingsInForceTest, AreThePackagersWhereNobodyElseSaysAnything) {
  machine_.settings.channel = "beta";
  machine_.settings.mode = UpdateMode::kAsk;
  machine_.writeSettings(machine_.settings);
  EXPECT_EQ(inForce().settings, machine_.settings);
  EXPECT_FALSE(inForce().isOff());
}

TEST_F(SettingsInForceTest, GiveTheParametersTheWordBeforeThePackager) {
  machine_.extraProperties = property("qydyna_update_mode", "manual") +
                             property("qydyna_update_channel", "beta") +
                             property("qydyna_update_pin", "12");
  EXPECT_EQ(inForce().settings.mode, UpdateMode::kManual);
  EXPECT_EQ(inForce().settings.channel, "beta");
  EXPECT_EQ(inForce().pin, "12");
}

TEST_F(SettingsInForceTest, LeaveOutWhatCannotBeUnderstood) {
  machine_.extraProperties =
      property("qydyna_update_mode", "sometimes") + property("qydyna_update_channel", "../beta");
  EXPECT_EQ(inForce().settings, machine_.settings);
}

TEST_F(SettingsInForceTest, GiveTheUserHisChannel) {
  EXPECT_EQ(inForce("nightly").settings.channel, "nightly");
}

TEST_F(SettingsInForceTest, GiveTheAdministratorTheLastWord) {
  machine_.extraProperties =
      property("qydyna_update_mode", "background") + property("qydyna_update_pin", "12");
  administratorSays("# ours\n mode = ask \nchannel=beta # until May\n\npin = 9\nwhat = ever\n");
  const SettingsInForce force = inForce("nightly");
  EXPECT_EQ(force.settings.mode, UpdateMode::kAsk);
  EXPECT_EQ(force.settings.channel, "beta");
  EXPECT_EQ(force.pin, "9");
  EXPECT_FALSE(force.isOff());
}

TEST_F(SettingsInForceTest, AreOffWhereTheAdministratorSaysSoOrIsNotUnderstood) {
  for (const char* const line : {"mode = off", "mode=of", "mode"}) {
    administratorSays(line);
    EXPECT_EQ(inForce().whyOff, "the administrator has switched updates off") << line;
  }
}

TEST_F(SettingsInForceTest, AreOffWithoutSettings) {
  ASSERT_EQ(unlink((machine_.updaterFolder() + "/QuilloryUpdate").c_str()), 0);
  EXPECT_EQ(inForce().whyOff, "this application was packed without settings for updates");
  writeFile(machine_.updaterFolder() + "/QuilloryUpdate", "broken");
  EXPECT_THAT(inForce().whyOff, ::testing::HasSubstr("are refused"));
}

TEST_F(SettingsInForceTest, AreOffWithoutAnUpdateUrl) {
  machine_.extraProperties = property("qystat_update_url", "http://no.invalid/anything");
  EXPECT_EQ(inForce().whyOff, "this application has no update URL");
}

TEST_F(SettingsInForceTest, NameTheKeysThatCount) {
  const update::Installation its = machine_.installation();
  EXPECT_THAT(update::trustedKeys({"3003"}, machine_.settings, its), ElementsAre("3003"));
  EXPECT_EQ(update::trustedKeys({}, machine_.settings, its), machine_.settings.keys);
  EXPECT_THAT(update::trustedKeys({}, {}, its), ElementsAre(testKey("working").publicHex()));
  update::Installation unsignedOne = its;
  unsignedOne.bundleKey = "";
  EXPECT_THAT(update::trustedKeys({}, {}, unsignedOne), IsEmpty());
}

}  // namespace
}  // namespace quillory::testing
