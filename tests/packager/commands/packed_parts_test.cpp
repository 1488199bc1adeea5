#include "packager/commands/packed_parts.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::records;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

BundlePart part(const std::string& name, const std::string& version, const std::string& content) {
  BundlePart part{name, version, ContentTree(name)};
  part.content.addBytes(content, "file");
  return part;
}

// What the independent tool makes of an archive.
std::string plain(const std::string& archive) {
  return runChild({"xz", "--format=lzma", "-dc", archive}).out;
}

std::string archiveOf(const std::string& content) {
  return records({"0", "file", std::to_string(content.size())}) + content + records({""});
}

TEST(PackParts, NamesTheArchivesAsTheyAreCalledInATail) {
  const TempDir dir;
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  const PackedParts packed =
      packParts({part("Quillory", "7", "u"), part("Demo", "3", "aa"), part("JRE", "17", "rrr")},
                {0, nullptr, Salt::kRandom}, dir.str(), reporter);
  EXPECT_EQ(packed.updater.archive, dir / "GU.p2.l2");
  EXPECT_EQ(packed.application.archive, dir / "App.p2.l2");
  ASSERT_TRUE(packed.runtime.has_value());
  EXPECT_EQ(packed.runtime->archive, dir / "JRE.p2.l2");
  EXPECT_EQ(plain(dir / "GU.p2.l2"), archiveOf("u"));
  EXPECT_EQ(plain(dir / "App.p2.l2"), archiveOf("aa"));
  EXPECT_EQ(plain(dir / "JRE.p2.l2"), archiveOf("rrr"));
}

TEST(PackParts, KeepsNamesAndVersions) {
  const TempDir dir;
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  const PackedParts packed =
      packParts({part("Quillory", "7", "u"), part("Demo", "3", "a"), std::nullopt},
                {0, nullptr, Salt::kRandom}, dir.str(), reporter);
  EXPECT_EQ(packed.updater.name, "Quillory");
  EXPECT_EQ(packed.updater.version, "7");
  EXPECT_EQ(packed.application.name, "Demo");
  EXPECT_EQ(packed.application.version, "3");
  EXPECT_FALSE(packed.runtime.has_value());
  EXPECT_FALSE(fs::exists(dir / "JRE.p2.l2"));
}

TEST(PackParts, LeavesNothingWhenAPartCannotBePacked) {
  const TempDir dir;
  const TempDir sources;
  writeFile(sources / "vanishing", "x");
  BundlePart bad{"Demo", "3", ContentTree("application")};
  bad.content.addFile(sources / "vanishing", "a");
  fs::remove(sources / "vanishing");
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  EXPECT_THROW(packParts({part("Quillory", "7", "u"), bad, std::nullopt},
                         {0, nullptr, Salt::kRandom}, dir.str(), reporter),
               PackError);
  EXPECT_TRUE(fs::is_empty(dir.str()));
}

}  // namespace
}  // namespace quillory::pack
