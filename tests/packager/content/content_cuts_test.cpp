#include "packager/content/content_cuts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "packager/content/compression_tuning.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::TempDir;
using testing::writeFile;

std::string megabytes(std::size_t count) { return std::string(count << 20, 'x'); }

std::vector<std::pair<std::uint64_t, std::size_t>> cutsIn(const ContentTree& tree) {
  std::vector<std::pair<std::uint64_t, std::size_t>> cuts;
  for (const LzmaCut& cut : cutsFor(tree)) cuts.emplace_back(cut.start >> 20, cut.known >> 20);
  return cuts;
}

TEST(CutsFor, CutsAroundLargeFilesAndInsideThem) {
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

TEST(CutsFor, SearchesLessFarInALargeProgram) {
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

// Bytes without a pattern.
std::string noise(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

ContentTree treeOf(const std::string& jar) {
  ContentTree tree("application");
  tree.addBytes(std::string(100, 'a'), "before");
  tree.addBytes(jar, "lib/app.jar");
  return tree;
}

// How much of the jar stands before each cut but the last, from its end.
std::vector<std::uint64_t> fromTheEnd(const ContentTree& tree) {
  std::uint64_t total = 0;
  for (const auto& [path, entry] : tree.entries()) total += archivedBytes(path, entry);
  std::vector<std::uint64_t> ends;
  for (const LzmaCut& cut : cutsFor(tree)) ends.push_back(total - cut.start);
  return ends;
}

TEST(CutsFor, CutsWhereTheContentSaysIt) {
  const std::string jar = noise(11 << 20, 1);
  const std::vector<std::uint64_t> cuts = fromTheEnd(treeOf(jar));
  ASSERT_GE(cuts.size(), 3u);
  EXPECT_EQ(cuts.back(), 16u << 10) << "what a signature is behind";
  const std::vector<std::uint64_t> longer = fromTheEnd(treeOf("some bytes more" + jar));
  EXPECT_EQ(longer.front(), cuts.front() + 15) << "where the jar begins";
  EXPECT_TRUE(std::equal(longer.begin() + 1, longer.end(), cuts.begin() + 1, cuts.end()));
  std::string other = jar;
  other[std::size_t{7} << 20] = static_cast<char>(other[std::size_t{7} << 20] ^ 1);
  std::vector<std::uint64_t> same;
  const std::vector<std::uint64_t> changed = fromTheEnd(treeOf(other));
  std::set_intersection(cuts.rbegin(), cuts.rend(), changed.rbegin(), changed.rend(),
                        std::back_inserter(same));
  EXPECT_GE(same.size() + 1, cuts.size()) << "one may have been at the change";
}

TEST(CutsFor, MakesPiecesNeitherSmallNorLarge) {
  for (const std::string& jar : {noise(20 << 20, 2), megabytes(20)}) {
    ContentTree tree("application");
    for (int i = 0; i < 3; ++i) tree.addBytes(jar.substr(0, 12 << 20), std::to_string(i) + ".jar");
    const std::vector<LzmaCut> cuts = cutsFor(tree);
    std::uint64_t start = 0;
    for (std::size_t i = 0; i + 1 < cuts.size(); ++i) {
      EXPECT_LE(cuts[i].start - start, 16u << 20);
      if (cuts[i].known > 0) {
        EXPECT_GE(cuts[i].start - start, 4u << 20);
        EXPECT_EQ(cuts[i].known, 4u << 20);
      }
      start = cuts[i].start;
    }
    const auto atFiles =
        std::count_if(cuts.begin(), cuts.end(), [](const LzmaCut& cut) { return cut.known == 0; });
    EXPECT_EQ(atFiles, 3) << "each file begins a piece";
    EXPECT_GE(cuts.size(), 4u);
  }
}

TEST(CutsFor, LeavesSmallContentWhole) {
  ContentTree tree("application");
  tree.addBytes(megabytes(3), "a");
  EXPECT_TRUE(cutsFor(tree).empty());
}

TEST(CutsFor, TakesALargeJarForContentThatChanges) {
  ContentTree tree("application");
  tree.addBytes("PK\x03\x04" + noise(20 << 20, 3), "app.jar");
  EXPECT_GE(cutsFor(tree).size(), 3u);
}

TEST(CutsFor, ReadsFilesAsTheyAre) {
  const TempDir dir;
  const std::string jar = noise(9 << 20, 4);
  writeFile(dir / "app.jar", jar);
  ContentTree bytes("application"), file("application");
  bytes.addBytes(jar, "app.jar");
  file.addFile(dir / "app.jar", "app.jar");
  const std::vector<LzmaCut> expected = cutsFor(bytes, 77);
  const std::vector<LzmaCut> cuts = cutsFor(file, 77);
  ASSERT_EQ(cuts.size(), expected.size());
  for (std::size_t i = 0; i < cuts.size(); ++i) EXPECT_EQ(cuts[i].start, expected[i].start);
}

TEST(ArchivedBytes, AreThoseOfTheRecordsToo) {
  const ContentEntry folder;
  EXPECT_EQ(archivedBytes("lib", folder), std::string("1.lib.").size());
  ContentEntry bytes{ContentEntry::Kind::kBytes, "", "1234567890", 10};
  EXPECT_EQ(archivedBytes("a/b", bytes), std::string("0.a/b.10.1234567890").size());
  bytes.size = 0;
  EXPECT_EQ(archivedBytes("a/b", bytes), 0u) << "left out";
}

}  // namespace
}  // namespace quillory::pack
