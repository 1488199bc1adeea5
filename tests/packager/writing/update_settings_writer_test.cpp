#include "packager/writing/update_settings_writer.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/page_example.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::readFile;
using testing::TempDir;

UpdateSettings example() {
  UpdateSettings settings;
  settings.channel = "beta";
  settings.mode = UpdateMode::kAtStart;
  settings.atStartSeconds = 15;
  settings.mirrors = {"https://mirror.example/hello/"};
  settings.keys = {"3003020101", "3003020102"};
  return settings;
}

TEST(UpdateSettingsWriter, GivesTheExampleOfThePage) {
  EXPECT_EQ(updateSettingsBytes(example()), pageExample("formats/update-settings.md"));
  TempDir dir;
  writeUpdateSettings(dir / "QuilloryUpdate", example());
  EXPECT_EQ(readFile(dir / "QuilloryUpdate"), pageExample("formats/update-settings.md"));
}

TEST(UpdateSettingsWriter, WritesNothingThatItsReaderRefuses) {
  UpdateSettings settings = example();
  settings.mirrors = {"ftp://mirror.example/"};
  try {
    updateSettingsBytes(settings);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_STREQ(e.what(),
                 "the update settings would be refused by every installation: "
                 "Mirror URL: it is no http address");
  }
  settings = example();
  settings.keepVersions = 1;
  EXPECT_THROW(updateSettingsBytes(settings), PackError);
  settings = example();
  settings.keys = {std::string(8192, 'a')};
  EXPECT_THROW(updateSettingsBytes(settings), PackError);
}

}  // namespace
}  // namespace quillory::pack
