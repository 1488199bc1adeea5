#include "packager/writing/release_list_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/report/findings.h"
#include "tests/formats/list_parts.h"
#include "tests/harness/child_process.h"
#include "tests/harness/page_example.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

using testing::bytesOf;
using testing::ChildResult;
using ::testing::ElementsAre;
using testing::exampleList;
using testing::listValues;
using testing::madeKey;
using testing::pageExample;
using testing::readFile;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

class ReleaseListWriter : public ::testing::Test {
 protected:
  // Checked by a script with other crypto libraries.
  std::string check(const std::string& bytes) {
    writeFile(dir_ / "list", bytes);
    const ChildResult result =
        runChild({"/usr/bin/python3", QUILLORY_CHECK_SIGNATURE, madeKey(), dir_ / "list"});
    EXPECT_EQ(result.err, "");
    return result.out;
  }

  const SigningKey key_ = SigningKey::load(madeKey());
  TempDir dir_;
};

TEST_F(ReleaseListWriter, GivesTheExampleOfThePageSignedAsArchivesAre) {
  const std::string bytes = releaseListBytes(exampleList(), {&key_}, Salt::kRandom);
  const std::string records = bytesOf(listValues());
  EXPECT_EQ(bytes.substr(0, records.size()), records);
  EXPECT_EQ(bytes.substr(0, records.size()),
            pageExample("formats/release-list.md").substr(0, records.size()));
  EXPECT_EQ(check(bytes), "good\n");
}

TEST_F(ReleaseListWriter, WritesWhatTheReaderReads) {
  const SigningKey other = SigningKey::generate(1040);
  ReleaseList list = exampleList();
  list.minimumFrom = 2;
  list.steppingStone = {"Quillory-Hello-stable-releases-3", 700, std::string(64, 'e')};
  list.nextKeys = {other.publicHex(), key_.publicHex()};
  ReleaseComponent runtime = list.components.front();
  runtime.role = kRuntimeRole;
  runtime.name = "JRE";
  runtime.deltas.push_back(runtime.deltas.front());
  list.components.insert(list.components.begin(), runtime);
  writeReleaseList(dir_ / "out", list, {&key_, &other}, Salt::kDerived);
  const ReleaseListVerdict verdict =
      readReleaseList(dir_ / "out", {other.publicHex(), key_.publicHex()});
  EXPECT_EQ(verdict.refusal, "");
  ASSERT_TRUE(verdict.list);
  EXPECT_EQ(*verdict.list, list);
  EXPECT_THAT(verdict.signedBy, ElementsAre(other.publicHex(), key_.publicHex()));
  EXPECT_EQ(verdict.keysFromNowOn, list.nextKeys);
  EXPECT_EQ(releaseListBytes(list, {&key_, &other}, Salt::kDerived), readFile(dir_ / "out"));
}

TEST_F(ReleaseListWriter, WritesNothingThatItsReaderRefuses) {
  ReleaseList list = exampleList();
  list.components.front().archive.name = "../archive";
  try {
    writeReleaseList(dir_ / "out", list, {&key_}, Salt::kRandom);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_STREQ(e.what(),
                 "the release list would be refused by every installation: "
                 "Archive File: it is no plain file name");
  }
  EXPECT_FALSE(std::filesystem::exists(dir_ / "out"));
  list = exampleList();
  list.notes = std::string(kMaxNotesBytes + 1, 'x');
  EXPECT_THROW(releaseListBytes(list, {&key_}, Salt::kRandom), PackError);
  // Each record is within its limit, and all of them are more than a list may have.
  list = exampleList();
  list.withdrawn.assign(1000, list.withdrawn.front());
  list.notes = std::string(kMaxNotesBytes, 'x');
  EXPECT_NO_THROW(releaseListBytes(list, {&key_}, Salt::kRandom));
  list.components.front().deltas.assign(50, list.components.front().deltas.front());
  for (ReleaseDelta& delta : list.components.front().deltas)
    delta.file.name = std::string(255, 'x');
  for (WithdrawnRelease& withdrawn : list.withdrawn) withdrawn.version = std::string(50, '1');
  list.nextKeys.assign(4, std::string(8190, 'a'));
  list.components.assign(3, list.components.front());
  list.components[0].role = kUpdaterRole;
  list.components[1].role = kRuntimeRole;
  EXPECT_THROW(releaseListBytes(list, {&key_}, Salt::kRandom), PackError);
}

TEST_F(ReleaseListWriter, SignsOnceOrTwice) {
  EXPECT_THROW(releaseListBytes(exampleList(), {}, Salt::kRandom), PackError);
  EXPECT_THROW(releaseListBytes(exampleList(), {&key_, &key_, &key_}, Salt::kRandom), PackError);
}

}  // namespace
}  // namespace quillory::pack
