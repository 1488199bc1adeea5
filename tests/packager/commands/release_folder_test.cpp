#include "packager/commands/release_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/keys/public_key.h"
#include "packager/writing/release_list_writer.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using testing::madeKey;
using testing::rulesOf;

const std::string kHash(64, 'a');

class ReleaseFolderTest : public ::testing::Test {
 protected:
  static ReleaseList listOf(std::int64_t number, const std::string& version,
                            const std::string& channel = "stable") {
    ReleaseList list{"Hello", channel, "linux", number, 1000, 2000};
    list.components = {{"application",
                        "Hello",
                        version,
                        version,
                        {"Quillory-Hello-" + version + "-archive.p2.l2", 5, kHash},
                        9,
                        kHash,
                        7}};
    return list;
  }
  void write(const std::string& name, const ReleaseList& list) {
    writeReleaseList(dir_ / name, list, {&key_}, Salt::kDerived);
  }
  ReleaseFolder read(const std::string& channel = "stable") {
    return {dir_.str(), "Hello", channel, {key_.publicHex()}, findings_};
  }
  std::string errorOf() {
    try {
      read();
    } catch (const PackError& e) {
      return asText(e.finding());
    }
    return "";
  }

  testing::TempDir dir_;
  const SigningKey key_ = SigningKey::load(madeKey());
  Findings findings_;
};

TEST_F(ReleaseFolderTest, HasNothingWhereNothingIs) {
  const ReleaseFolder folder(dir_ / "missing", "Hello", "stable", {}, findings_);
  EXPECT_EQ(folder.newest(), nullptr);
  EXPECT_EQ(folder.nextNumber(), 1);
  EXPECT_EQ(folder.released("Hello", "1"), nullptr);
  EXPECT_EQ(folder.highestVersion("Hello"), 0);
  EXPECT_TRUE(findings_.empty());
}

TEST_F(ReleaseFolderTest, HasItsListsInTheOrderOfTheirNumbers) {
  for (const int number : {2, 10, 9}) {
    write("Quillory-Hello-stable-releases-" + std::to_string(number),
          listOf(number, std::to_string(number)));
  }
  write("Quillory-Hello-stable-releases", listOf(10, "10"));
  testing::writeFile(dir_ / "Quillory-Hello-stable-releases-x", "not a number");
  testing::writeFile(dir_ / "Quillory-Other-stable-releases-3", "of another application");
  const ReleaseFolder folder = read();
  ASSERT_EQ(folder.lists().size(), 3u);
  EXPECT_EQ(folder.lists()[0].number, 10);
  EXPECT_EQ(folder.lists()[1].number, 9);
  EXPECT_EQ(folder.lists()[2].number, 2);
  EXPECT_EQ(folder.newest()->number, 10);
  EXPECT_EQ(folder.nextNumber(), 11);
  EXPECT_EQ(folder.highestVersion("Hello"), 10);
  EXPECT_EQ(folder.released("Hello", "9")->version, "9");
  EXPECT_EQ(folder.released("Hello", "3"), nullptr);
  EXPECT_TRUE(findings_.empty());
}

// A run that was killed may have kept a list that never came into force.
TEST_F(ReleaseFolderTest, NeverGivesANumberTwice) {
  write("Quillory-Hello-stable-releases", listOf(4, "4"));
  write("Quillory-Hello-stable-releases-5", listOf(5, "5"));
  const ReleaseFolder folder = read();
  EXPECT_EQ(folder.newest()->number, 4);
  EXPECT_EQ(folder.nextNumber(), 6);
  EXPECT_EQ(folder.lists().size(), 2u);
}

TEST_F(ReleaseFolderTest, KnowsWhatOtherChannelsHaveReleased) {
  write("Quillory-Hello-stable-releases-1", listOf(1, "1"));
  write("Quillory-Hello-beta-releases-7", listOf(7, "3", "beta"));
  const ReleaseFolder folder = read();
  EXPECT_EQ(folder.lists().size(), 1u);
  EXPECT_EQ(folder.nextNumber(), 2);
  EXPECT_EQ(folder.highestVersion("Hello"), 1);
  ASSERT_NE(folder.released("Hello", "3"), nullptr);
  EXPECT_EQ(read("beta").nextNumber(), 8);
}

TEST_F(ReleaseFolderTest, RefusesAListThatIsNotWhatItsNameSays) {
  write("Quillory-Hello-stable-releases-3", listOf(4, "4"));
  EXPECT_EQ(errorOf(), dir_ / "Quillory-Hello-stable-releases-3" +
                           ": error: is the list of release 4 of \"Hello\", channel \"stable\"\n"
                           "  -> get the one of this name back from your server");
}

TEST_F(ReleaseFolderTest, RefusesADamagedList) {
  write("Quillory-Hello-stable-releases", listOf(1, "1"));
  const std::string whole = testing::readFile(dir_ / "Quillory-Hello-stable-releases");
  testing::writeFile(dir_ / "Quillory-Hello-stable-releases", whole.substr(0, 40));
  EXPECT_THAT(errorOf(), HasSubstr("is no release list: "));
}

TEST_F(ReleaseFolderTest, TellsOfAListThatNoneOfItsOwnersKeysHasSigned) {
  write("Quillory-Hello-stable-releases", listOf(1, "1"));
  const ReleaseFolder folder(dir_.str(), "Hello", "stable", {}, findings_);
  EXPECT_EQ(folder.newest()->number, 1);
  ASSERT_EQ(rulesOf(findings_), std::vector<std::string>{"other-key"});
  EXPECT_EQ(findings_[0].severity, Severity::kWarning);
}

TEST_F(ReleaseFolderTest, NamesAKeptListAsOthersDo) {
  write("Quillory-Hello-stable-releases-3", listOf(3, "3"));
  const std::optional<ReleaseFile> file = read().keptList(3);
  ASSERT_TRUE(file.has_value());
  EXPECT_EQ(file->name, "Quillory-Hello-stable-releases-3");
  EXPECT_EQ(file->length, static_cast<std::int64_t>(fs::file_size(dir_ / file->name)));
  EXPECT_EQ(file->sha256, testing::runChild({"sha256sum", dir_ / file->name}).out.substr(0, 64));
  EXPECT_FALSE(read().keptList(2).has_value());
}

}  // namespace
}  // namespace quillory::pack
