#include "update/delta.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "formats/sha256.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::update {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using testing::FileSizeLimit;
using ::testing::HasSubstr;
using testing::pageExample;
using testing::readFile;
using testing::records;
using testing::TempDir;
using testing::writeFile;
namespace fs = std::filesystem;

const std::string kOldConf = "version 1\n";
const std::string kLib = "hello";
// The archive of version 2 without the content of its second file.
const std::string kBefore =
    records({"0", "conf", "10"}) + "version 2\n" + records({"0", "lib/a", "5"});
const std::string kBehind = records({""});
const std::string kRestored = kBefore + kLib + kBehind;

// LZMA2 chunks that are not compressed, behind known bytes.
std::string plainChunk(const std::string& bytes) {
  const auto length = static_cast<unsigned>(bytes.size() - 1);
  return {'\x02', static_cast<char>(length >> 8), static_cast<char>(length & 0xFF)};
}
std::string streamOf(const std::vector<std::string>& pieces) {
  std::string stream;
  for (const std::string& piece : pieces) stream += plainChunk(piece) + piece;
  return stream + '\0';
}

class UndoDelta : public ::testing::Test {
 protected:
  UndoDelta() {
    writeFile(dir_ / "base/conf", kOldConf);
    writeFile(dir_ / "base/lib/a", kLib);
    task_.delta = dir_ / "delta";
    task_.installedFolder = dir_ / "base";
    task_.out = dir_ / "out/archive.p2";
    task_.component = "Hello";
    task_.from = "1";
    task_.to = "2";
    task_.restoredLength = static_cast<std::int64_t>(kRestored.size());
    task_.restoredSha256 = sha256Hex(kRestored);
    fs::create_directory(dir_ / "out");
  }

  // The header of the page's example, with other values.
  std::string header(const std::string& window = "4096") const {
    return records({"1", "Hello", "1", "2", std::string(64, 'e'),
                    std::to_string(task_.restoredLength), task_.restoredSha256, window, "1", "conf",
                    "10", sha256Hex(kOldConf), "1", std::to_string(kBefore.size()), "lib/a", "5",
                    sha256Hex(kLib)});
  }

  DeltaResult undo(const std::string& bytes) {
    writeFile(task_.delta, bytes);
    DeltaResult result = undoDelta(task_);
    // Nothing that is not whole is left, and nothing is left beside.
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(dir_ / "out")) ++files;
    EXPECT_EQ(files, result.isRestored() ? 1u : 0u);
    EXPECT_EQ(result.reason.empty(), result.isRestored());
    return result;
  }

  TempDir dir_;
  DeltaTask task_;
};

TEST_F(UndoDelta, RestoresTheExampleOfThePage) {
  EXPECT_TRUE(undo(pageExample("formats/delta.md")).isRestored());
  EXPECT_EQ(readFile(task_.out), kRestored);
}

TEST_F(UndoDelta, TakesTheStreamInChunksOfAnyLength) {
  for (std::size_t cut = 1; cut < kBefore.size(); ++cut) {
    fs::remove(task_.out);
    EXPECT_TRUE(undo(header() + streamOf({kBefore.substr(0, cut), kBefore.substr(cut) + kBehind}))
                    .isRestored());
    EXPECT_EQ(readFile(task_.out), kRestored);
  }
}

TEST_F(UndoDelta, ReplacesWhatWasThereOnlyByTheWhole) {
  writeFile(task_.out, "before");
  writeFile(task_.delta, header());
  EXPECT_EQ(undoDelta(task_).end, DeltaEnd::kUnusable);
  EXPECT_EQ(readFile(task_.out), "before");
  writeFile(task_.delta, header() + streamOf({kBefore, kBehind}));
  EXPECT_TRUE(undoDelta(task_).isRestored());
  EXPECT_EQ(readFile(task_.out), kRestored);
}

TEST_F(UndoDelta, CopiesAtTheBeginningAndTheEndAndOneAfterTheOther) {
  writeFile(dir_ / "base/b", "bb");
  const std::string restored = kLib + "bb" + "x" + kLib;
  task_.restoredLength = static_cast<std::int64_t>(restored.size());
  task_.restoredSha256 = sha256Hex(restored);
  const std::string lib = sha256Hex(kLib);
  EXPECT_TRUE(undo(records({"1",
                            "Hello",
                            "1",
                            "2",
                            std::string(64, 'e'),
                            "13",
                            task_.restoredSha256,
                            "4096",
                            "0",
                            "3",
                            "0",
                            "lib/a",
                            "5",
                            lib,
                            "0",
                            "b",
                            "2",
                            sha256Hex("bb"),
                            "1",
                            "lib/a",
                            "5",
                            lib}) +
                   "\x01\x00\x00x\x00"s)
                  .isRestored());
  EXPECT_EQ(readFile(task_.out), restored);
}

TEST_F(UndoDelta, RefusesWhatIsCutAnywhere) {
  const std::string whole = pageExample("formats/delta.md");
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_EQ(undo(whole.substr(0, length)).end, DeltaEnd::kUnusable) << length;
  EXPECT_EQ(undo(whole + '\0').reason, "there are bytes behind the end of the LZMA stream");
}

TEST_F(UndoDelta, RefusesAByteThatChangedAnywhere) {
  const std::string whole = pageExample("formats/delta.md");
  std::vector<std::size_t> unnoticed;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    if (!undo(changed).isRestored()) continue;
    unnoticed.push_back(at);
    fs::remove(task_.out);
  }
  // What the archive does not depend on: the hash of the base, which the list has, those of the
  // files, which matter when something went wrong, and the last digit of the window.
  for (const std::size_t at : unnoticed) {
    const std::size_t record = static_cast<std::size_t>(
        std::count(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at), '\0'));
    EXPECT_TRUE(record == 4 || record == 7 || record == 11 || record == 16) << at;
  }
}

TEST_F(UndoDelta, NamesTheFileThatWasChangedByHand) {
  const std::string good = pageExample("formats/delta.md");
  writeFile(dir_ / "base/conf", "version 1!\n");
  EXPECT_EQ(undo(good).reason, "conf: it has another length than it was installed with");
  EXPECT_EQ(undo(good).end, DeltaEnd::kBaseChanged);
  writeFile(dir_ / "base/conf", kOldConf);
  writeFile(dir_ / "base/lib/a", "hullo");
  EXPECT_EQ(undo(good).reason, "lib/a: it has another content than it was installed with");
  EXPECT_EQ(undo(good).end, DeltaEnd::kBaseChanged);
  fs::remove(dir_ / "base/lib/a");
  EXPECT_EQ(undo(good).reason, "lib/a: No such file or directory");
  EXPECT_EQ(undo(good).end, DeltaEnd::kBaseChanged);
  fs::remove_all(dir_ / "base");
  EXPECT_EQ(undo(good).end, DeltaEnd::kBaseChanged);
}

TEST_F(UndoDelta, FollowsNoLinkInTheBase) {
  const std::string good = pageExample("formats/delta.md");
  fs::rename(dir_ / "base/lib", dir_ / "elsewhere");
  fs::create_symlink("../elsewhere", dir_ / "base/lib");
  EXPECT_EQ(undo(good).end, DeltaEnd::kBaseChanged);
  EXPECT_THAT(undo(good).reason, HasSubstr("lib/a"));
}

TEST_F(UndoDelta, RefusesADeltaOfAnotherKind) {
  const std::string good = pageExample("formats/delta.md");
  const DeltaTask meant = task_;
  task_.component = "Other";
  EXPECT_EQ(undo(good).reason, "it leads from Hello 1 to 2");
  task_ = meant;
  task_.from = "0";
  EXPECT_EQ(undo(good).end, DeltaEnd::kUnusable);
  task_ = meant;
  task_.to = "3";
  EXPECT_EQ(undo(good).end, DeltaEnd::kUnusable);
  task_ = meant;
  task_.restoredSha256 = sha256Hex("other");
  EXPECT_EQ(undo(good).reason, "it restores another archive");
  task_ = meant;
  ++task_.restoredLength;
  EXPECT_EQ(undo(good).reason, "it restores another archive");
}

TEST_F(UndoDelta, RefusesToMakeMoreOrLessThanItSays) {
  EXPECT_EQ(undo(header() + streamOf({kBefore, kBehind, "x"})).reason,
            "it makes more than it says");
  EXPECT_EQ(undo(header() + streamOf({kBefore})).reason, "it makes less than it says");
  EXPECT_EQ(undo(header() + streamOf({kBefore.substr(1), kBehind})).reason,
            "it makes less than it says");
  EXPECT_EQ(undo(header() + streamOf({kBefore, "x"})).reason,
            "what it makes has another SHA-256 than it says");
}

TEST_F(UndoDelta, KeepsToTheMemoryThatItMayTake) {
  task_.memoryLimit = (std::int64_t{164} << 20) - 1;
  EXPECT_EQ(undo(header("104857600") + streamOf({kBefore, kBehind})).reason,
            "it takes 164 MiB of memory");
  EXPECT_EQ(undo(header("104857600")).end, DeltaEnd::kTooMuchMemory);
  ++task_.memoryLimit;
  EXPECT_TRUE(undo(header("104857600") + streamOf({kBefore, kBehind})).isRestored());
}

TEST_F(UndoDelta, StopsWhereItIsAskedTo) {
  std::vector<std::int64_t> told;
  task_.progress = [&](std::int64_t done) {
    told.push_back(done);
    return done < static_cast<std::int64_t>(kBefore.size());
  };
  EXPECT_EQ(undo(pageExample("formats/delta.md")).end, DeltaEnd::kCancelled);
  EXPECT_THAT(told, ElementsAre(0, static_cast<std::int64_t>(kBefore.size())));
}

TEST_F(UndoDelta, TellsOfAFullDisk) {
  writeFile(task_.delta, pageExample("formats/delta.md"));
  const FileSizeLimit limit(10);
  EXPECT_EQ(undoDelta(task_).end, DeltaEnd::kNotWritten);
  EXPECT_TRUE(fs::is_empty(dir_ / "out"));
}

TEST_F(UndoDelta, TellsOfAFolderThatCannotBeWritten) {
  task_.out = dir_ / "missing/archive.p2";
  const DeltaResult result = undo(pageExample("formats/delta.md"));
  EXPECT_EQ(result.end, DeltaEnd::kNotWritten);
  EXPECT_THAT(result.reason, HasSubstr("No such file or directory"));
}

}  // namespace
}  // namespace quillory::update
