#include "formats/delta_header.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/harness/page_example.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using ::testing::ElementsAre;
using testing::pageExample;
using testing::TempDir;
using testing::writeFile;

const std::string kHashA(64, 'a');
const std::string kHashB(64, 'b');
const std::string kHashC(64, 'c');
const std::string kHashD(64, 'd');

// A dictionary of one file and two copies.
std::vector<std::string> exampleValues() {
  return {"1",    "Hello", "1", "2",     kHashA, "100",  kHashB, "4096",  "1",  "conf", "10",
          kHashC, "2",     "7", "lib/a", "5",    kHashD, "0",    "lib/b", "88", kHashA};
}

std::string headerOf(const std::vector<std::string>& values) {
  std::string bytes;
  for (const std::string& value : values) bytes.append(value).push_back('\0');
  return bytes;
}

TEST(ReadDeltaHeader, TakesEachRecord) {
  const std::string bytes = headerOf(exampleValues());
  const DeltaHeaderResult result = readDeltaHeaderBytes(bytes + "the stream");
  EXPECT_EQ(result.refusal, "");
  EXPECT_EQ(result.length, bytes.size());
  ASSERT_TRUE(result.header);
  const DeltaHeader expected{"Hello",
                             "1",
                             "2",
                             kHashA,
                             100,
                             kHashB,
                             4096,
                             {{"conf", 10, kHashC}},
                             {{7, {"lib/a", 5, kHashD}}, {0, {"lib/b", 88, kHashA}}}};
  EXPECT_EQ(*result.header, expected);
  EXPECT_EQ(memoryToUndo(*result.header), 4096 + 64 * 1024 * 1024);
}

TEST(ReadDeltaHeader, TakesTheExampleOfThePage) {
  const DeltaHeaderResult result = readDeltaHeaderBytes(pageExample("formats/delta.md"));
  ASSERT_TRUE(result.header) << result.refusal;
  EXPECT_EQ(result.header->component, "Hello");
  EXPECT_EQ(result.header->window, 4096);
  ASSERT_EQ(result.header->dictionary.size(), 1u);
  EXPECT_EQ(result.header->dictionary[0].path, "conf");
  ASSERT_EQ(result.header->copies.size(), 1u);
  EXPECT_EQ(result.header->copies[0].file.path, "lib/a");
}

TEST(ReadDeltaHeader, ReadsFilesWithHeadersOfAnyLength) {
  TempDir dir;
  std::vector<std::string> values = exampleValues();
  values.resize(12);
  constexpr int kCopies = 3000;
  values.push_back(std::to_string(kCopies));
  values[5] = std::to_string(kCopies);
  for (int i = 0; i < kCopies; ++i)
    values.insert(values.end(), {"0", "lib/" + std::to_string(i), "1", kHashD});
  const std::string bytes = headerOf(values);
  ASSERT_GT(bytes.size(), 2 * 64 * 1024u);
  writeFile(dir / "delta", bytes + std::string(1'000'000, 'x'));
  const DeltaHeaderResult result = readDeltaHeader(dir / "delta");
  ASSERT_TRUE(result.header) << result.refusal;
  EXPECT_EQ(result.header->copies.size(), std::size_t{kCopies});
  EXPECT_EQ(result.length, bytes.size());
  writeFile(dir / "cut", bytes.substr(0, bytes.size() - 1));
  EXPECT_EQ(readDeltaHeader(dir / "cut").refusal, "Copy SHA-256: the file ends here");
}

TEST(ReadDeltaHeader, LooksNoFurtherThanItsLimit) {
  TempDir dir;
  writeFile(dir / "long", std::string(kMaxDeltaHeaderBytes + 1000, '1'));
  EXPECT_EQ(readDeltaHeader(dir / "long").refusal, "Delta VER: the file ends here");
  // As many files as there may be, whose paths make the header too long.
  std::vector<std::string> values = exampleValues();
  values.resize(8);
  values.push_back("50000");
  for (int i = 0; i < 50'000; ++i) values.insert(values.end(), {std::string(50, 'p'), "1", kHashD});
  values[7] = "65536";
  EXPECT_FALSE(readDeltaHeaderBytes(headerOf(values)).header);
}

TEST(ReadDeltaHeader, ReadsNoFileBehindALink) {
  TempDir dir;
  writeFile(dir / "delta", headerOf(exampleValues()));
  std::filesystem::create_symlink("delta", dir / "link");
  EXPECT_TRUE(readDeltaHeader(dir / "delta").header);
  EXPECT_EQ(readDeltaHeader(dir / "link").refusal, "it cannot be read");
  EXPECT_EQ(readDeltaHeader(dir / "missing").refusal, "it cannot be read");
}

TEST(ReadDeltaHeader, RefusesWhatIsCutAnywhere) {
  const std::string whole = headerOf(exampleValues());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const DeltaHeaderResult result = readDeltaHeaderBytes(whole.substr(0, length));
    EXPECT_FALSE(result.header) << length;
    EXPECT_NE(result.refusal, "") << length;
    EXPECT_EQ(result.length, 0u);
  }
}

TEST(ReadDeltaHeader, RefusesAByteThatEndsOrJoinsRecords) {
  const std::string whole = headerOf(exampleValues());
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = whole[at] == '\0' ? '\xFF' : '\0';
    EXPECT_FALSE(readDeltaHeaderBytes(changed).header) << at;
  }
}

TEST(ReadDeltaHeader, RefusesWhatIsBeyondTheLimits) {
  static const struct {
    std::size_t index;
    std::string value;
    const char* refusal;
  } kCases[] = {
      {0, "2", "Delta VER: the delta was made by a newer quillory-pack"},
      {1, "", "Delta Component: it is no plain file name"},
      {1, "a/b", "Delta Component: it is no plain file name"},
      {2, "", "Delta From: it is no version"},
      {3, "..", "Delta To: it is no version"},
      {4, "x", "Delta Base SHA-256: it is no SHA-256"},
      {5, "-1", "Restored Length: it is no plain number"},
      {6, "", "Restored SHA-256: it is no SHA-256"},
      {7, "4095", "Window: it is less than 4096"},
      {7, "536870913", "Window: it is more than 536870912"},
      {8, "50001", "Dictionary Count: it is more than 50000"},
      {9, "", "Dictionary Path: it leads out of the folder"},
      {9, "/etc/passwd", "Dictionary Path: it leads out of the folder"},
      {9, "a/../b", "Dictionary Path: it leads out of the folder"},
      {9, "..", "Dictionary Path: it leads out of the folder"},
      {9, "a//b", "Dictionary Path: it leads out of the folder"},
      {9, "a/", "Dictionary Path: it leads out of the folder"},
      {9, "./a", "Dictionary Path: it leads out of the folder"},
      {9, "a/.", "Dictionary Path: it leads out of the folder"},
      {9, std::string(1023, 'p'), "Dictionary Path: it has more than 1022 bytes"},
      {10, "0", "Dictionary Length: the file is empty"},
      {10, "4097", "Dictionary Length: the dictionary exceeds the window"},
      {10, "999999999999999", "Dictionary Length: the dictionary exceeds the window"},
      {11, std::string(64, 'A'), "Dictionary SHA-256: it is no SHA-256"},
      {12, "50001", "Copy Count: it is more than 50000"},
      {12, "3", "Stream Length: the file ends here"},
      {13, "8", "Copy Length: the copies exceed what is restored"},
      {13, "999999999999999", "Copy Length: the copies exceed what is restored"},
      {14, "a\nb", "Copy Path: it is no text"},
      {14, "../b", "Copy Path: it leads out of the folder"},
      {15, "0", "Copy Length: the file is empty"},
      {15, "101", "Copy Length: the copies exceed what is restored"},
      {16, "", "Copy SHA-256: it is no SHA-256"},
      {19, "89", "Copy Length: the copies exceed what is restored"},
  };
  for (const auto& [index, value, refusal] : kCases) {
    std::vector<std::string> values = exampleValues();
    values.at(index) = value;
    const DeltaHeaderResult result = readDeltaHeaderBytes(headerOf(values));
    EXPECT_FALSE(result.header);
    EXPECT_EQ(result.refusal, refusal) << index << ' ' << value;
  }
}

TEST(DeltaName, IsThatOnTheServer) {
  EXPECT_EQ(deltaName("My App", "12", "9"), "Quillory-My App-12-from-9-delta");
}

}  // namespace
}  // namespace quillory
