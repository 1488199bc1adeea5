#include "packager/content/compression_tuning.h"

#include <gtest/gtest.h>

#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::TempDir;
using testing::writeFile;

TEST(CompressionTuning, HasADictionaryAsLargeAsTheContent) {
  const std::pair<std::size_t, std::size_t> cases[] = {
      {1, std::size_t{64} << 10},          {65'000, std::size_t{64} << 10},
      {66'000, std::size_t{128} << 10},    {3'000'000, std::size_t{4} << 20},
      {30'000'000, std::size_t{32} << 20}, {70'000'000, std::size_t{64} << 20}};
  for (const auto& [size, dictionary] : cases) {
    ContentTree tree("application");
    tree.addBytes(std::string(size, 'x'), "a");
    EXPECT_EQ(tuningFor(tree, 6).dictionary, dictionary) << size;
    EXPECT_EQ(tuningFor(tree, 9).dictionary, dictionary) << size;
  }
}

TEST(CompressionTuning, NeverMakesAQuickLevelSlower) {
  ContentTree tree("application");
  tree.addBytes(std::string(30'000'000, 'x'), "a");
  EXPECT_EQ(tuningFor(tree, 0).dictionary, std::size_t{256} << 10);
  EXPECT_EQ(tuningFor(tree, 1).dictionary, std::size_t{1} << 20);
  EXPECT_EQ(tuningFor(tree, 5).dictionary, std::size_t{8} << 20);
}

TEST(CompressionTuning, KnowsProgramsFromClasses) {
  const TempDir dir;
  writeFile(dir / "libjvm.so",
            "\x7f"
            "ELF" +
                std::string(10'000, 'x'));
  writeFile(dir / "modules", std::string(9'000, 'x'));
  writeFile(dir / "A.class", "\xca\xfe\xba\xbe" + std::string(1'000, 'x'));
  ContentTree tree("runtime");
  tree.addFile(dir / "modules", "modules");
  tree.addFile(dir / "A.class", "A.class");
  EXPECT_EQ(tuningFor(tree, 6).literalContextBits, 4);
  EXPECT_EQ(tuningFor(tree, 6).positionBits, 0);
  tree.addFile(dir / "libjvm.so", "libjvm.so");
  EXPECT_EQ(tuningFor(tree, 6).literalContextBits, 4) << "less than half";
  EXPECT_EQ(tuningFor(tree, 6).positionBits, 1) << "more than an eighth";
  writeFile(dir / "more.so",
            "\x7f"
            "ELF" +
                std::string(10'000, 'x'));
  tree.addFile(dir / "more.so", "more.so");
  EXPECT_EQ(tuningFor(tree, 6).literalContextBits, 3);
  EXPECT_EQ(tuningFor(tree, 6).literalPositionBits, 0);
  EXPECT_EQ(tuningFor(tree, 6).positionBits, 2);
}

TEST(CompressionTuning, SearchesDeepestWhereSmallIsAskedFor) {
  ContentTree tree("application");
  tree.addBytes("x", "a");
  EXPECT_EQ(tuningFor(tree, 5).searchDepth, 0);
  EXPECT_EQ(tuningFor(tree, 6).searchDepth, 24);
  EXPECT_EQ(tuningFor(tree, 7).searchDepth, 24);
  EXPECT_EQ(tuningFor(tree, 8).searchDepth, 0);
}

}  // namespace
}  // namespace quillory::pack
