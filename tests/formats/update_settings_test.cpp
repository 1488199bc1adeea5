#include "formats/update_settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/harness/page_example.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::pageExample;
using testing::TempDir;
using testing::writeFile;

std::vector<std::string> exampleSettings() {
  return {"1", "beta",       "at-start",  "15", "24", "2", "1", "https://mirror.example/hello/",
          "2", "3003020101", "3003020102"};
}

std::string settingsOf(const std::vector<std::string>& values) {
  std::string bytes;
  for (const std::string& value : values) bytes.append(value).push_back('\0');
  return bytes;
}

UpdateSettings example() {
  UpdateSettings settings;
  settings.channel = "beta";
  settings.mode = UpdateMode::kAtStart;
  settings.atStartSeconds = 15;
  settings.mirrors = {"https://mirror.example/hello/"};
  settings.keys = {"3003020101", "3003020102"};
  return settings;
}

TEST(ReadUpdateSettings, TakesTheExampleOfThePage) {
  const std::string page = pageExample("formats/update-settings.md");
  EXPECT_EQ(page, settingsOf(exampleSettings()));
  TempDir dir;
  writeFile(dir / "QuilloryUpdate", page);
  const UpdateSettingsResult result = readUpdateSettings(dir / "QuilloryUpdate");
  EXPECT_EQ(result.refusal, "");
  ASSERT_TRUE(result.settings);
  EXPECT_EQ(*result.settings, example());
}

TEST(ReadUpdateSettings, TakesWhatAnAdministratorHasToKnow) {
  std::vector<std::string> values = exampleSettings();
  values.insert(values.end(), {"https://app.example/", "JRE"});
  const UpdateSettingsResult result = readUpdateSettingsBytes(settingsOf(values));
  ASSERT_TRUE(result.settings) << result.refusal;
  EXPECT_EQ(result.settings->updateUrl, "https://app.example/");
  EXPECT_EQ(result.settings->runtimeName, "JRE");
  values.pop_back();
  EXPECT_FALSE(readUpdateSettingsBytes(settingsOf(values)).settings);
  values.push_back("");
  EXPECT_EQ(readUpdateSettingsBytes(settingsOf(values)).refusal, "Runtime Name: it is empty");
  values.back() = "JRE";
  values.push_back("more");
  EXPECT_EQ(readUpdateSettingsBytes(settingsOf(values)).refusal, "Runtime Name: more follows");
  values.pop_back();
  values[values.size() - 2] = "ftp://app.example/";
  EXPECT_EQ(readUpdateSettingsBytes(settingsOf(values)).refusal,
            "Key Count: more follows than it counts");
}

TEST(ReadUpdateSettings, TakesNoFileForNoFault) {
  TempDir dir;
  const UpdateSettingsResult result = readUpdateSettings(dir / "QuilloryUpdate");
  EXPECT_FALSE(result.settings);
  EXPECT_EQ(result.refusal, "");
}

TEST(ReadUpdateSettings, RefusesWhatIsNoPlainFile) {
  TempDir dir;
  writeFile(dir / "file", settingsOf(exampleSettings()));
  std::filesystem::create_symlink("file", dir / "link");
  EXPECT_EQ(readUpdateSettings(dir / "link").refusal, "it cannot be read");
  writeFile(dir / "long", std::string(kMaxUpdateSettingsBytes + 1, 'x'));
  EXPECT_EQ(readUpdateSettings(dir / "long").refusal, "the file is too long");
}

TEST(ReadUpdateSettings, RefusesWhatIsCutAnywhere) {
  const std::string whole = settingsOf(exampleSettings());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const UpdateSettingsResult result = readUpdateSettingsBytes(whole.substr(0, length));
    EXPECT_FALSE(result.settings) << length;
    EXPECT_NE(result.refusal, "") << length;
  }
  EXPECT_FALSE(readUpdateSettingsBytes(whole + '\0').settings);
  EXPECT_FALSE(readUpdateSettingsBytes(whole + "x").settings);
}

TEST(ReadUpdateSettings, RefusesAByteThatEndsOrJoinsRecords) {
  const std::string whole = settingsOf(exampleSettings());
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = whole[at] == '\0' ? '1' : '\0';
    EXPECT_FALSE(readUpdateSettingsBytes(changed).settings) << at;
  }
}

TEST(ReadUpdateSettings, RefusesWhatIsBeyondTheLimits) {
  static const struct {
    std::size_t index;
    std::string value;
    const char* refusal;
  } kCases[] = {
      {0, "2", "Update Settings VER: the file was made by a newer quillory-pack"},
      {1, "", "Update Channel: it is no channel's name"},
      {1, "a b", "Update Channel: it is no channel's name"},
      {2, "Background", "Update Mode: there is no such mode"},
      {2, "", "Update Mode: there is no such mode"},
      {3, "601", "At Start Seconds: it is more than 600"},
      {4, "0", "Check Hours: it is 0"},
      {4, "8761", "Check Hours: it is more than 8760"},
      {5, "1", "Keep Versions: there is no way back with fewer than 2"},
      {5, "101", "Keep Versions: it is more than 100"},
      {6, "11", "Mirror Count: it is more than 10"},
      {6, "99999999999999", "Mirror Count: it is more than 10"},
      {7, "file:///etc/passwd", "Mirror URL: it is no http address"},
      {7, "https://a b", "Mirror URL: it is no http address"},
      {7, "", "Mirror URL: it is no http address"},
      {7, "https://" + std::string(4991, 'x'), "Mirror URL: it has more than 4998 bytes"},
      {8, "5", "Key Count: it is more than 4"},
      {8, "3", "Update Key: the file ends here"},
      {8, "1", "Key Count: more follows than it counts"},
      {9, "", "Update Key: it is no key in hexadecimal"},
      {9, "abc", "Update Key: it is no key in hexadecimal"},
      {10, "zz", "Update Key: it is no key in hexadecimal"},
  };
  for (const auto& [index, value, refusal] : kCases) {
    std::vector<std::string> values = exampleSettings();
    values.at(index) = value;
    const UpdateSettingsResult result = readUpdateSettingsBytes(settingsOf(values));
    EXPECT_FALSE(result.settings);
    EXPECT_EQ(result.refusal, refusal) << index << ' ' << value;
  }
}

TEST(UpdateModeOf, KnowsEachByItsName) {
  for (const char* name : {"background", "ask", "at-start", "manual", "off"}) {
    const auto mode = updateModeOf(name);
    ASSERT_TRUE(mode) << name;
    EXPECT_EQ(asText(*mode), name);
  }
  EXPECT_EQ(updateModeOf("off"), UpdateMode::kOff);
  EXPECT_EQ(updateModeOf("background"), UpdateMode::kBackground);
  EXPECT_FALSE(updateModeOf(""));
  EXPECT_FALSE(updateModeOf("OFF"));
}

}  // namespace
}  // namespace quillory
