#include "packager/content/compression_tuning.h"

#include <gtest/gtest.h>

#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::TempDir;
using testing::writeFile;

std::string megabytes(std::size_t count) { return std::string(count << 20, 'x'); }

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

TEST(CompressionTuning, SearchesLessFarInALargeProgram) {
  const TempDir dir;
  writeFile(dir / "libjvm.so",
            "\x7f"
            "ELF" +
                megabytes(17));
  ContentTree tree("runtime");
  tree.addBytes(megabytes(20), "lib/modules");
  tree.addFile(dir / "libjvm.so", "lib/server");
  tree.addBytes(megabytes(20), "lib/z");
  const std::vector<LzmaCut> cuts = cutsFor(tree);
  ASSERT_EQ(cuts.size(), 2u);
  EXPECT_EQ(cuts[0].reach, std::size_t{8} << 20);
  EXPECT_EQ(cuts[1].reach, 0u);
}

TEST(CompressionTuning, SearchesDeepestWhereSmallIsAskedFor) {
  ContentTree tree("application");
  tree.addBytes("x", "a");
  EXPECT_EQ(tuningFor(tree, 5).searchDepth, 0);
  EXPECT_EQ(tuningFor(tree, 6).searchDepth, 24);
  EXPECT_EQ(tuningFor(tree, 7).searchDepth, 24);
  EXPECT_EQ(tuningFor(tree, 8).searchDepth, 0);
}

std::vector<std::pair<std::uint64_t, std::size_t>> cutsIn(const ContentTree& tree) {
  std::vector<std::pair<std::uint64_t, std::size_t>> cuts;
  for (const LzmaCut& cut : cutsFor(tree)) cuts.emplace_back(cut.start >> 20, cut.known >> 20);
  return cuts;
}

TEST(CompressionTuning, CutsAroundLargeFilesAndInsideThem) {
  using Cuts = std::vector<std::pair<std::uint64_t, std::size_t>>;
  ContentTree tree("runtime");
  EXPECT_EQ(cutsIn(tree), Cuts{});
  tree.addBytes(megabytes(3), "lib/a");
  tree.addBytes(megabytes(60), "lib/modules");
  EXPECT_EQ(cutsIn(tree), (Cuts{{33, 12}})) << "what is before it is no piece of its own";
  tree.addBytes(megabytes(20), "lib/server");
  EXPECT_EQ(cutsIn(tree), (Cuts{{33, 12}, {63, 0}}));
  tree.addBytes(megabytes(5), "lib/z");
  EXPECT_EQ(cutsIn(tree), (Cuts{{33, 12}, {63, 0}})) << "nor is what is behind it";
  for (const LzmaCut& cut : cutsFor(tree)) EXPECT_EQ(cut.start % 16, 0u);
  EXPECT_EQ(tuningFor(tree, 6).dictionary, std::size_t{64} << 20);
}

TEST(CompressionTuning, CutsManySmallFilesWhereAPieceIsFull) {
  ContentTree tree("application");
  for (int i = 0; i < 10; ++i) tree.addBytes(megabytes(10), "lib/" + std::to_string(i) + ".jar");
  const auto cuts = cutsIn(tree);
  ASSERT_EQ(cuts.size(), 3u);
  EXPECT_EQ(cuts[0], (std::pair<std::uint64_t, std::size_t>{30, 4}));
  EXPECT_EQ(cuts[2].first, 90u);
}

}  // namespace
}  // namespace quillory::pack
