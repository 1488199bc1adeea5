#include "formats/archive_format.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "formats/launch_file_format.h"
#include "formats/tail_format.h"
#include "formats/version_file_format.h"

namespace quillory {
namespace {

TEST(CompressionOf, GoesByTheEndOfTheName) {
  static constexpr struct {
    const char* path;
    bool isCompressed;
    const char* without;
    bool isArchive;
  } kCases[] = {{"a.p2.l2", true, "a.p2", true},
                {"a.p2", false, "a.p2", true},
                {"a.l2", true, "a", false},
                {"a.l2.p2", false, "a.l2.p2", true},
                {"a.p2.l2.l2", true, "a.p2.l2", false},
                {"a", false, "a", false},
                {"", false, "", false},
                {".l2", true, "", false},
                {"a.L2", false, "a.L2", false},
                {"a.p2.l2/b", false, "a.p2.l2/b", false}};
  for (const auto& [path, isCompressed, without, isArchive] : kCases) {
    SCOPED_TRACE(path);
    EXPECT_EQ(compressionOf(path) != nullptr, isCompressed);
    EXPECT_EQ(withoutCompression(path), without);
    EXPECT_EQ(isArchiveName(path), isArchive);
  }
}

TEST(ArchiveNames, AreThoseOfThePages) {
  EXPECT_EQ(archiveName("JREArchive"), "JREArchive.p2");
  EXPECT_EQ(packedArchiveName(kApplicationPart), "App.p2.l2");
  EXPECT_STREQ(kLzmaToolName, "lzma64");
  EXPECT_EQ(versionFileName("JRE"), "Quillory-JRE-version.txt");
  EXPECT_EQ(releaseArchiveName("JRE", "17"), "Quillory-JRE-17-archive.p2.l2");
  EXPECT_TRUE(kSignatureBlockPath.starts_with(kSpecialBlockPrefix));
}

TEST(LaunchFileRecords, ComeWithTheirVersionsInOrder) {
  EXPECT_TRUE(
      std::is_sorted(kLaunchFileRecords.begin(), kLaunchFileRecords.end(),
                     [](const auto& a, const auto& b) { return a.sinceVersion < b.sinceVersion; }));
  EXPECT_EQ(kLaunchFileRecords.back().sinceVersion, kLaunchFileVersion);
  EXPECT_STREQ(kLaunchFileRecords[kLaunchHeaderRecords].name, kClassPathRecord.name);
  EXPECT_STREQ(kLaunchFileRecords[kLaunchTrailerStart].name, "Main Class JRECompatibility");
}

}  // namespace
}  // namespace quillory
