// The program itself, started as the launcher starts it, and against the xz tools.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::ChildResult;
using testing::readFile;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

ChildResult lzma64(std::vector<std::string> arguments) {
  const char* program = std::getenv("QUILLORY_LZMA64");
  arguments.insert(arguments.begin(), program ? program : "lzma64-is-not-set");
  return runChild(arguments);
}

// 300,000 bytes that compress to something, but not to nothing.
std::string sampleText() {
  std::string text;
  unsigned state = 12345;
  while (text.size() < 300000) {
    state = state * 1103515245 + 12345;
    text += std::to_string(state >> 16) + (state & 0x8000 ? "\n" : " word ");
  }
  return text;
}

class Lzma64 : public ::testing::Test {
 protected:
  void SetUp() override { writeFile(dir_ / "plain", sampleText()); }

  std::string xz(const std::string& options, const std::string& from, const std::string& to) {
    const ChildResult result =
        runChild({"sh", "-c", "xz " + options + " < '" + from + "' > '" + to + "'"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return readFile(to);
  }

  TempDir dir_;
};

TEST_F(Lzma64, UnpacksWhatXzPackedAtEveryLevel) {
  for (const char level : {'0', '3', '6', '9'}) {
    SCOPED_TRACE(level);
    xz(std::string("--format=lzma -") + level, dir_ / "plain", dir_ / "packed");
    const ChildResult result = lzma64({"d", dir_ / "packed", dir_ / "back"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(readFile(dir_ / "back"), sampleText());
  }
}

TEST_F(Lzma64, PacksWhatXzUnpacks) {
  ASSERT_EQ(lzma64({"e", dir_ / "plain", dir_ / "packed"}).exitStatus, 0);
  EXPECT_EQ(xz("-d --format=lzma", dir_ / "packed", dir_ / "back"), sampleText());
}

TEST_F(Lzma64, PacksToTheSameBytesAsXzAtTheSameLevel) {
  ASSERT_EQ(lzma64({"e", dir_ / "plain", dir_ / "six"}).exitStatus, 0);
  EXPECT_EQ(readFile(dir_ / "six"), xz("--format=lzma -6", dir_ / "plain", dir_ / "xz6"));
  ASSERT_EQ(lzma64({"e", "-1", dir_ / "plain", dir_ / "one"}).exitStatus, 0);
  EXPECT_EQ(readFile(dir_ / "one"), xz("--format=lzma -1", dir_ / "plain", dir_ / "xz1"));
}

TEST_F(Lzma64, UnpacksAStreamThatStatesItsLength) {
  std::string packed = xz("--format=lzma", dir_ / "plain", dir_ / "packed");
  const std::uint64_t length = sampleText().size();
  for (int i = 0; i < 8; ++i) {
    packed[static_cast<std::size_t>(5 + i)] = static_cast<char>(length >> (8 * i) & 0xff);
  }
  writeFile(dir_ / "packed", packed);
  EXPECT_EQ(lzma64({"d", dir_ / "packed", dir_ / "back"}).exitStatus, 0);
  EXPECT_EQ(readFile(dir_ / "back"), sampleText());
}

TEST_F(Lzma64, PacksAndUnpacksAnEmptyFile) {
  writeFile(dir_ / "plain", "");
  ASSERT_EQ(lzma64({"e", dir_ / "plain", dir_ / "packed"}).exitStatus, 0);
  ASSERT_EQ(lzma64({"d", dir_ / "packed", dir_ / "back"}).exitStatus, 0);
  EXPECT_EQ(readFile(dir_ / "back"), "");
}

TEST_F(Lzma64, LeavesNoOutputForBadInput) {
  const std::string packed = xz("--format=lzma", dir_ / "plain", dir_ / "packed");
  std::string flipped = packed;
  flipped[5000] = static_cast<char>(flipped[5000] ^ 0x10);
  const std::pair<const char*, std::string> cases[] = {
      {"empty", ""},
      {"plain text", sampleText()},
      {"header only", packed.substr(0, 13)},
      {"cut", packed.substr(0, packed.size() / 2)},
      {"one byte short", packed.substr(0, packed.size() - 1)},
      {"trailing bytes", packed + "x"},
      {"one bit flipped", flipped}};
  for (const auto& [name, bytes] : cases) {
    SCOPED_TRACE(name);
    TempDir out;
    writeFile(dir_ / "bad", bytes);
    const ChildResult result = lzma64({"d", dir_ / "bad", out / "back"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.err.rfind("lzma64: " + (dir_ / "bad") + ": ", 0), 0u) << result.err;
    EXPECT_TRUE(fs::is_empty(out.path()));
  }
}

TEST_F(Lzma64, KeepsTheOldOutputWhenTheInputIsBad) {
  writeFile(dir_ / "back", "old");
  EXPECT_EQ(lzma64({"d", dir_ / "plain", dir_ / "back"}).exitStatus, 1);
  EXPECT_EQ(readFile(dir_ / "back"), "old");
}

TEST_F(Lzma64, NamesTheInputThatIsMissing) {
  const ChildResult result = lzma64({"d", dir_ / "missing", dir_ / "back"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err,
            "lzma64: " + (dir_ / "missing") + ": cannot be opened: No such file or directory\n");
  EXPECT_FALSE(fs::exists(dir_ / "back"));
}

TEST_F(Lzma64, RefusesAFolderAsInput) {
  const ChildResult result = lzma64({"d", dir_.str(), dir_ / "back"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_NE(result.err.find("Is a directory"), std::string::npos) << result.err;
  EXPECT_FALSE(fs::exists(dir_ / "back"));
}

TEST_F(Lzma64, SaysHowItIsUsed) {
  const ChildResult help = lzma64({"--help"});
  EXPECT_EQ(help.exitStatus, 0);
  EXPECT_EQ(help.out.rfind("usage: lzma64 d IN OUT", 0), 0u);
  const std::vector<std::string> wrong[] = {{},
                                            {"x", "a", "b"},
                                            {"d"},
                                            {"d", "a"},
                                            {"d", "a", "b", "c"},
                                            {"e", "-10", "a", "b"},
                                            {"e", "-x", "a", "b"},
                                            {"d", "-6", "a", "b"}};
  for (const auto& arguments : wrong) {
    const ChildResult result = lzma64(arguments);
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err, help.out);
    EXPECT_EQ(result.out, "");
  }
}

TEST_F(Lzma64, FillsStandardStreamsThatAreClosed) {
  // The name of a stream can be opened only where there is one. Without it the files, which are
  // opened first, would get its number, and what is printed would go into them.
  const std::pair<const char*, const char*> cases[] = {
      {"/dev/stdin", "<&-"}, {"/dev/stdout", ">&-"}, {"/dev/stderr", "2>&-"}};
  for (const auto& [stream, closing] : cases) {
    SCOPED_TRACE(stream);
    const std::string packed = dir_ / "packed";
    const ChildResult result =
        runChild({"sh", "-c", std::string("exec \"$QUILLORY_LZMA64\" e \"$0\" \"$1\" ") + closing,
                  stream, packed});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(xz("-d --format=lzma", packed, dir_ / "back"), "") << "as the null device is";
    fs::remove(packed);
  }
}

TEST_F(Lzma64, UnpacksALargeFileInLittleMemory) {
  if (QUILLORY_SANITIZED) {
    GTEST_SKIP() << "the sanitizers need far more memory than the program";
  }
  // 200 MB of zeros in 64 MiB of address space, at a level whose dictionary is 1 MiB.
  const ChildResult packed = runChild(
      {"sh", "-c", "head -c 200000000 /dev/zero | xz --format=lzma -1 > '" + (dir_ / "big") + "'"});
  ASSERT_EQ(packed.exitStatus, 0);
  const std::string program = std::getenv("QUILLORY_LZMA64");
  const ChildResult result =
      runChild({"sh", "-c",
                "command -v prlimit >/dev/null || exit 3; prlimit --data=67108864 '" + program +
                    "' d '" + (dir_ / "big") + "' '" + (dir_ / "back") + "'"});
  if (result.exitStatus == 3) {
    GTEST_SKIP() << "there is no prlimit here";
  }
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(fs::file_size(dir_ / "back"), 200000000u);
}

}  // namespace
}  // namespace quillory
