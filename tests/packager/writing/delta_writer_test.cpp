#include "packager/writing/delta_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/release_list_format.h"
#include "formats/sha256.h"
#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/packager/plain_archives.h"
#include "update/delta.h"

namespace quillory::pack {
namespace {

using testing::ArchiveFiles;
using testing::archiveOf;
using testing::ChildResult;
using ::testing::HasSubstr;
using testing::installInto;
using testing::noise;
using testing::readFile;
using testing::records;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

class DeltaWriter : public ::testing::Test {
 protected:
  DeltaWriter() {
    request_.role = kApplicationRole;
    request_.component = "Hello";
    request_.from = "1";
    request_.to = "2";
    request_.oldArchive = dir_ / "old.p2";
    request_.newArchive = dir_ / "new.p2";
    request_.wholeLength = 1'000'000;
  }

  MadeDelta write(const ArchiveFiles& older, const ArchiveFiles& newer) {
    installInto(dir_ / "base", older);
    writeFile(request_.oldArchive, archiveOf(older));
    writeFile(request_.newArchive, archiveOf(newer));
    return writeDelta(request_, dir_ / "delta");
  }

  update::DeltaResult undo() {
    update::DeltaTask task;
    task.delta = dir_ / "delta";
    task.installedFolder = dir_ / "base";
    task.out = dir_ / "restored.p2";
    task.component = "Hello";
    task.from = "1";
    task.to = "2";
    task.restoredLength = static_cast<std::int64_t>(readFile(request_.newArchive).size());
    task.restoredSha256 = sha256Hex(readFile(request_.newArchive));
    return update::undoDelta(task);
  }

  // A version in which one of three files has changed.
  MadeDelta writeUsual() {
    const std::string changed = noise(1, 100'000);
    return write({{"a.jar", changed}, {"b.jar", noise(2, 5000)}, {"readme", "short"}},
                 {{"a.jar", changed.substr(0, 60'000) + "something new" + changed.substr(60'000)},
                  {"b.jar", noise(2, 5000)},
                  {"readme", "short"}});
  }

  TempDir dir_;
  DeltaRequest request_;
};

TEST_F(DeltaWriter, MakesWhatUndoesToTheNewArchive) {
  const MadeDelta made = writeUsual();
  EXPECT_TRUE(made.isMade) << made.reason;
  EXPECT_LT(made.length, 1000);
  const std::string bytes = readFile(dir_ / "delta");
  EXPECT_EQ(made.length, static_cast<std::int64_t>(bytes.size()));
  EXPECT_EQ(made.sha256, sha256Hex(bytes));
  EXPECT_EQ(made.baseSha256, sha256Hex(readFile(request_.oldArchive)));
  EXPECT_EQ(undo().reason, "");
  EXPECT_EQ(readFile(dir_ / "restored.p2"), readFile(request_.newArchive));
}

TEST_F(DeltaWriter, MakesWhatAnotherReaderUndoes) {
  const MadeDelta made = writeUsual();
  const ChildResult result = runChild({"/usr/bin/python3", "-B", QUILLORY_UNDO_DELTA,
                                       dir_ / "delta", dir_ / "base", dir_ / "restored"});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(readFile(dir_ / "restored"), readFile(request_.newArchive));
  const std::int64_t window = made.memory - 64 * 1024 * 1024;
  EXPECT_EQ(result.out,
            "Hello 1 2 " + made.baseSha256 + ' ' + std::to_string(window) + " 100000 1\n");
}

TEST_F(DeltaWriter, BeginsWithTheRecordsOfThePage) {
  writeUsual();
  const std::string newer = readFile(request_.newArchive);
  const std::string base = noise(1, 100'000);
  const std::string copy = noise(2, 5000);
  // The stream before the copy: two entries, the content of the first.
  const std::string before = records({"0", "a.jar", "100013"}) + std::string(100'013, '.') +
                             records({"0", "b.jar", "5000"});
  const std::string head = records(
      {"1", "Hello", "1", "2", sha256Hex(readFile(request_.oldArchive)),
       std::to_string(newer.size()), sha256Hex(newer),
       std::to_string(100'000 + newer.size() - copy.size()), "1", "a.jar", "100000",
       sha256Hex(base), "1", std::to_string(before.size()), "b.jar", "5000", sha256Hex(copy)});
  EXPECT_EQ(readFile(dir_ / "delta").substr(0, head.size()), head);
}

TEST_F(DeltaWriter, GivesTheSameBytesEveryTime) {
  writeUsual();
  const std::string bytes = readFile(dir_ / "delta");
  writeUsual();
  EXPECT_EQ(readFile(dir_ / "delta"), bytes);
}

TEST_F(DeltaWriter, MakesNoneThatIsMoreThanHalfOfTheWhole) {
  writeFile(dir_ / "delta", "before");
  request_.wholeLength = 40'000;
  const MadeDelta made = write({{"a", noise(1, 20'000)}}, {{"a", noise(2, 20'500)}});
  EXPECT_FALSE(made.isMade);
  EXPECT_EQ(made.reason, "it would be more than half of the whole archive");
  EXPECT_EQ(readFile(dir_ / "delta"), "before");
  request_.wholeLength = 45'000;
  EXPECT_TRUE(write({{"a", noise(1, 20'000)}}, {{"a", noise(2, 20'500)}}).isMade);
}

TEST_F(DeltaWriter, MakesNoneThatTakesTooMuchMemory) {
  request_.mostMemory = 2 * 1024 * 1024;
  const MadeDelta made = write({{"a", noise(1, 2'000'000)}}, {{"a", noise(1, 2'000'001)}});
  EXPECT_FALSE(made.isMade);
  EXPECT_EQ(made.reason, "undoing it would take 3 MiB of memory, and 2 are the limit");
  EXPECT_FALSE(std::filesystem::exists(dir_ / "delta"));
}

TEST_F(DeltaWriter, WorksFromAndToArchivesOfNothing) {
  EXPECT_TRUE(write({}, {{"a", "new"}}).isMade);
  EXPECT_EQ(undo().reason, "");
  EXPECT_EQ(readFile(dir_ / "restored.p2"), archiveOf({{"a", "new"}}));
  EXPECT_TRUE(write({{"a", noise(1, 1000)}}, {}).isMade);
  EXPECT_EQ(undo().reason, "");
  EXPECT_EQ(readFile(dir_ / "restored.p2"), archiveOf({}));
}

TEST_F(DeltaWriter, FindsThatTheBaseWasChangedByHand) {
  writeUsual();
  std::string changed = noise(1, 100'000);
  changed[50'000] = '!';
  writeFile(dir_ / "base/a.jar", changed);
  EXPECT_EQ(undo().end, update::DeltaEnd::kBaseChanged);
  EXPECT_THAT(undo().reason, HasSubstr("a.jar: it has another content"));
}

TEST_F(DeltaWriter, NamesAnArchiveThatIsNotThere) {
  writeFile(request_.oldArchive, archiveOf({}));
  try {
    writeDelta(request_, dir_ / "delta");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_THAT(asText(e.finding()), HasSubstr("new.p2: error: cannot be read"));
  }
}

}  // namespace
}  // namespace quillory::pack
