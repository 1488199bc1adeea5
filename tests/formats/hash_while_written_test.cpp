#include "formats/hash_while_written.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "formats/mixed_hash.h"
#include "support/output_file.h"
#include "tests/harness/eventually.h"
#include "tests/harness/hex.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::eventually;
using testing::hex;
using testing::TempDir;
using testing::writeFile;

constexpr long kWritten = 200'000;
// More than the block of a signature may take.
constexpr long kLeftAlone = 16'384;

// Of "01234567890123...", each half made with another program.
constexpr char kOfWritten[] =
    "8ddf9b2317645923bc681372ebcfc99afec63b3a6870db4b6ee7bc1bd56eb262"
    "34059de2038f39149dd775cdaa4b8d52ea20a2e909794cf634974727bcdf85df";
constexpr char kOfNoBytes[] =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"
    "c5d2460186f7233c927e7db2dcc703c0e500b653ca82273b7bfad8045d85a470";

std::string content() {
  std::string text;
  while (text.size() < kWritten) text += "0123456789";
  return text;
}

std::string digestOf(const HashedPart& part) {
  hash_state state = part.state;
  unsigned char digest[64];
  EXPECT_EQ(mixed_done(&state, digest), CRYPT_OK);
  return hex(digest);
}

class WrittenArchive : public ::testing::Test {
 protected:
  // What became of the digest when it goes on, up to `length`, with the file that has the name now.
  std::string continued(const BegunDigest& begun, long length = kWritten) const {
    HashAhead ahead(path_.c_str(), begun);
    ahead.allow(length);
    return digestOf(ahead.finish());
  }

  TempDir dir_;
  const std::string path_ = dir_ / "archive.p2";
};

TEST_F(WrittenArchive, IsHashedAsItGrowsButForItsEnd) {
  HashWhileWritten hashing(path_);
  OutputFile out(path_);
  const std::string bytes = content();
  ASSERT_TRUE(out.write(bytes.data(), 100'000));
  ASSERT_TRUE(eventually([&] { return hashing.length() == 100'000 - kLeftAlone; }));
  ASSERT_TRUE(out.write(bytes.data() + 100'000, 100'000));
  ASSERT_TRUE(eventually([&] { return hashing.length() == kWritten - kLeftAlone; }));
  ASSERT_TRUE(out.commit());
  const BegunDigest begun = hashing.finish();
  EXPECT_EQ(begun.part.length, kWritten - kLeftAlone);
  EXPECT_EQ(continued(begun), kOfWritten);
}

TEST_F(WrittenArchive, IsNotHashedAgain) {
  HashWhileWritten hashing(path_);
  OutputFile out(path_);
  ASSERT_TRUE(out.write(content().data(), kWritten));
  ASSERT_TRUE(eventually([&] { return hashing.length() == kWritten - kLeftAlone; }));
  ASSERT_TRUE(out.commit());
  BegunDigest begun = hashing.finish();
  mixed_init(&begun.part.state);
  EXPECT_NE(continued(begun), kOfWritten) << "without what was hashed before";
  begun.part.length = 0;
  EXPECT_EQ(continued(begun), kOfWritten);
}

TEST_F(WrittenArchive, IsHashedAnewWhenAnotherFileHasItsName) {
  HashWhileWritten hashing(path_);
  OutputFile out(path_);
  ASSERT_TRUE(out.write(std::string(kWritten, 'x').data(), kWritten));
  ASSERT_TRUE(eventually([&] { return hashing.length() > 0; }));
  const BegunDigest begun = hashing.finish();
  ASSERT_TRUE(out.commit());
  std::filesystem::remove(path_);
  writeFile(path_, content());
  EXPECT_EQ(continued(begun), kOfWritten);
}

TEST_F(WrittenArchive, IsNotHashedWhenItDoesNotComeAsAnOutputFile) {
  for (const char* name : {"archive.p2", "other"}) writeFile(dir_ / name, content());
  std::filesystem::create_symlink(dir_ / "other", dir_ / ".unfinished-aaaaaa");
  ASSERT_EQ(mkfifo((dir_ / ".unfinished-bbbbbb").c_str(), 0600), 0);
  HashWhileWritten hashing(path_);
  const BegunDigest begun = hashing.finish();
  EXPECT_EQ(begun.file, nullptr);
  EXPECT_EQ(begun.part.length, 0);
  EXPECT_EQ(digestOf(begun.part), kOfNoBytes);
  EXPECT_EQ(continued(begun), kOfWritten);
}

TEST_F(WrittenArchive, MayBeLeftToItself) {
  OutputFile out(path_);
  ASSERT_TRUE(out.write(content().data(), kWritten));
  HashWhileWritten hashing(path_);
  EXPECT_TRUE(eventually([&] { return hashing.length() > 0; }));
}

}  // namespace
}  // namespace quillory
