#include "packager/config/update_lint.h"

#include <gtest/gtest.h>

#include "tests/packager/loaded_config.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::findingOf;
using testing::hasRule;
using testing::Loaded;
using testing::loadWith;
using testing::rulesOf;
using Rules = std::vector<std::string>;

// [update] stands on line 7 of the file, and what is given begins on line 10.
Loaded loadUpdate(const std::string& lines) {
  return loadWith(
      "[update]\n"
      "url = \"https://example.com/updates/\"\n"
      "reserve-key = \"reserve.public.pem\"\n" +
      lines);
}

TEST(LintUpdates, HasNothingAgainstSettingsThatAreWhole) {
  const Loaded loaded = loadUpdate(
      "mode = \"at-start\"\n"
      "at-start-seconds = 5\n"
      "channel = \"beta-2\"\n"
      "mirrors = [\"https://mirror.example.com/\"]\n"
      "minimum-system = \"10.15\"\n"
      "minimum-from = 2\n"
      "stepping-stone = 1\n"
      "rollout = \"7 days\"\n");
  EXPECT_TRUE(loaded.accepted);
  EXPECT_EQ(rulesOf(loaded.findings), Rules{});
}

TEST(LintUpdates, WarnsOfKeysThatNoInstallationReads) {
  const Loaded loaded = loadUpdate("rollout = \"25%\"\n");
  EXPECT_TRUE(loaded.accepted);
  EXPECT_EQ(rulesOf(loaded.findings), Rules({"no-effect", "no-effect"}));
  EXPECT_EQ(loaded.findings[1].place.line, 10u);
  EXPECT_EQ(loaded.findings[1].what,
            "update.rollout has no effect here: installations do not look for updates by "
            "themselves");
  EXPECT_EQ(loaded.findings[1].advice, "mode = \"background\" in [update], or leave it out");
}

TEST(LintUpdates, WantsAUrlUnlessUpdatesAreOff) {
  const std::string rest = "reserve-key = \"r.pem\"\n[runtime]\nfolder = \"jre\"\n";
  const Finding finding =
      findingOf(loadWith("[update]\nmode = \"ask\"\n" + rest).findings, "update-url");
  EXPECT_EQ(finding.severity, Severity::kError);
  EXPECT_EQ(finding.place.line, 7u);
  EXPECT_FALSE(hasRule(loadWith("[update]\nmode = \"off\"\n" + rest).findings, "update-url"));
  // A dynamic one can be set later, and has its warning.
  EXPECT_TRUE(loadWith("[update]\ndynamic = true\nmode = \"ask\"\n" + rest).accepted);
}

TEST(LintUpdates, RefusesChannelsThatNoFileCanBeNamedAfter) {
  for (const char* channel : {"", ".b", "a/b", "a b", "ä"}) {
    const Finding finding =
        findingOf(loadUpdate("channel = \"" + std::string(channel) + "\"\n").findings, "channel");
    EXPECT_EQ(finding.place.line, 10u) << channel;
  }
  EXPECT_FALSE(
      hasRule(loadUpdate("channel = \"" + std::string(50, 'c') + "\"\n").findings, "channel"));
  EXPECT_TRUE(
      hasRule(loadUpdate("channel = \"" + std::string(51, 'c') + "\"\n").findings, "channel"));
}

TEST(LintUpdates, RefusesMirrorsThatAreNoUrls) {
  const std::string mode = "mode = \"ask\"\n";
  EXPECT_EQ(
      findingOf(loadUpdate(mode + "mirrors = [\"ftp://example.com/\"]\n").findings, "update-url")
          .place.line,
      11u);
  EXPECT_EQ(
      findingOf(loadUpdate(mode + "mirrors = [\"http://example.com/\"]\n").findings, "plain-http")
          .severity,
      Severity::kWarning);
  std::string many;
  for (int i = 0; i < 11; ++i) {
    many += "\"https://example.com/\",";
  }
  EXPECT_TRUE(hasRule(loadUpdate(mode + "mirrors = [" + many + "]\n").findings, "range"));
}

TEST(LintUpdates, WarnsWhenOneKeyIsAllThereIs) {
  const Loaded loaded = loadWith("[update]\nurl = \"https://example.com/\"\nmode = \"ask\"\n");
  EXPECT_TRUE(loaded.accepted);
  const Finding finding = findingOf(loaded.findings, "no-reserve-key");
  EXPECT_EQ(finding.severity, Severity::kWarning);
  EXPECT_EQ(finding.advice,
            "quillory-pack keygen --reserve reserve.pem, then reserve-key = "
            "\"reserve.public.pem\"");
}

TEST(LintUpdates, WantsTheKeysThatASecondSignatureIsFor) {
  const std::string signing = "[signing]\nkey = \"old.pem\"\nnext-key = \"new.pem\"\n";
  const Finding finding = findingOf(loadUpdate("mode = \"ask\"\n" + signing).findings, "next-keys");
  EXPECT_EQ(finding.place.line, 13u);
  EXPECT_EQ(finding.advice, "next-keys = [\"new.pem\", \"reserve.public.pem\"] in [update]");
  EXPECT_TRUE(loadUpdate("mode = \"ask\"\nnext-keys = [\"new.pem\"]\n" + signing).accepted);
  EXPECT_TRUE(hasRule(
      loadUpdate("mode = \"ask\"\nnext-keys = [\"1\", \"2\", \"3\", \"4\", \"5\"]\n").findings,
      "range"));
}

TEST(LintUpdates, WarnsOfSecondsThatNobodyWaits) {
  EXPECT_EQ(
      findingOf(loadUpdate("mode = \"ask\"\nat-start-seconds = 3\n").findings, "no-effect").what,
      "update.at-start-seconds counts for mode = \"at-start\" only");
}

TEST(LintUpdates, RefusesSystemsThatAreNoVersions) {
  for (const char* version : {"10.", ".1", "10..1", "Catalina", "10.15-beta"}) {
    EXPECT_TRUE(hasRule(
        loadUpdate("mode = \"ask\"\nminimum-system = \"" + std::string(version) + "\"\n").findings,
        "system-version"))
        << version;
  }
  for (const char* version : {"", "13", "10.15.7", "2.36"}) {
    EXPECT_TRUE(
        loadUpdate("mode = \"ask\"\nminimum-system = \"" + std::string(version) + "\"\n").accepted)
        << version;
  }
}

TEST(LintUpdates, RefusesAMinimumThatLeavesOldInstallationsBehind) {
  const std::string mode = "mode = \"ask\"\n";
  EXPECT_EQ(findingOf(loadUpdate(mode + "minimum-from = 5\n").findings, "stepping-stone").severity,
            Severity::kError);
  EXPECT_EQ(findingOf(loadUpdate(mode + "stepping-stone = 5\n").findings, "no-effect").severity,
            Severity::kWarning);
}

TEST(LintUpdates, RefusesRolloutsThatAreNeitherAPartNorATime) {
  EXPECT_EQ(findingOf(loadUpdate("mode = \"ask\"\nrollout = \"7\"\n").findings, "rollout").advice,
            "rollout = \"25%\", or rollout = \"7 days\"");
}

TEST(LintUpdates, RefusesOnlineBundlesThatFetchNothing) {
  EXPECT_EQ(findingOf(loadUpdate("[bundle]\nonline = true\n").findings, "online").place.line, 11u);
  EXPECT_TRUE(loadUpdate("mode = \"manual\"\n[bundle]\nonline = true\n").accepted);
}

}  // namespace
}  // namespace quillory::pack
