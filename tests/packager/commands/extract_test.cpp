#include "packager/commands/extract.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/harness/child_process.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/packager/finished_bundle.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

using Extract = FinishedBundle;

TEST_F(Extract, GivesTheFilesBackAsTheLauncherDoes) {
  const TempDir dir;
  const CommandResult result =
      pack({"extract", "--key", Project::key(), release("Hello-3"), dir / "out"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, dir / "out" + "\n");
  EXPECT_EQ(readFile(dir / "out/lib/hello.jar"), readFile(project_ / "hello.jar"));
  EXPECT_EQ(modeOf(dir / "out/lib/hello.jar"), 0755u);
  EXPECT_EQ(modeOf(dir / "out/lib"), 0777u);
  EXPECT_TRUE(fs::exists(release("Hello-3"))) << "the archive stays";
}

TEST_F(Extract, RefusesAnArchiveThatTheKeyDidNotSign) {
  const TempDir dir;
  writeFile(dir / "a.p2", pageExample("formats/archive.md", 2));
  const CommandResult result =
      pack({"extract", "--key", Project::key(), dir / "a.p2", dir / "out"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("the archive is not signed with this key"));
  EXPECT_FALSE(fs::exists(dir / "out"));
  EXPECT_EQ(pack({"extract", dir / "a.p2", dir / "out"}).status, 0);
  EXPECT_EQ(readFile(dir / "out/lib/hello.txt"), "hello");
}

TEST_F(Extract, RefusesWhatWouldLeaveTheFolderOrNeverEnd) {
  const TempDir dir;
  writeFile(dir / "up.p2", records({"0", "../up", "1"}) + "x" + records({""}));
  EXPECT_EQ(pack({"extract", dir / "up.p2", dir / "out"}).status, 3);
  writeFile(dir / "short.p2", records({"0", "a", "10"}) + "x");
  EXPECT_EQ(pack({"extract", dir / "short.p2", dir / "out"}).status, 3);
  writeFile(dir / "packed.p2", records({"2", "a.jar", "1"}) + "x" + records({""}));
  EXPECT_EQ(pack({"extract", dir / "packed.p2", dir / "out"}).status, 1);
  EXPECT_FALSE(fs::exists(dir / "out"));
  EXPECT_FALSE(fs::exists(dir / "up"));
}

TEST(ExtractProgram, SaysWhyTheLaunchersCodeEndedItAndCleansUp) {
  const TempDir dir;
  fs::create_directory(dir / "tmp");
  // A folder, with something in it, where the next entry needs a file.
  writeFile(dir / "a.p2",
            records({"0", "a/b", "1"}) + "x" + records({"0", "a", "1"}) + "y" + records({""}));
  ChildOptions options;
  options.environment["TMPDIR"] = dir / "tmp";
  const ChildResult plain =
      runChild({QUILLORY_PACK, "extract", dir / "a.p2", dir / "out"}, options);
  EXPECT_EQ(plain.exitStatus, 1);
  EXPECT_EQ(plain.out, "");
  EXPECT_EQ(plain.err, dir / "a.p2" +
                           ": error: cannot be extracted: Unable to extract archive file a (1), "
                           "unable to open file for writing\n");
  const ChildResult json =
      runChild({QUILLORY_PACK, "extract", "--json", "-v", dir / "a.p2", dir / "new"}, options);
  EXPECT_EQ(json.exitStatus, 1);
  EXPECT_EQ(json.err, "");
  const auto document = nlohmann::json::parse(json.out);
  EXPECT_EQ(document["command"], "extract");
  EXPECT_EQ(document["status"], 1);
  ASSERT_EQ(document["findings"].size(), 1u);
  EXPECT_THAT(document["findings"][0]["what"].get<std::string>(),
              HasSubstr("Unable to extract archive file a (1)"));
  EXPECT_TRUE(fs::is_empty(dir / "tmp"));
}

TEST_F(Extract, GivesScriptsADocumentAndNothingElse) {
  const TempDir dir;
  const ChildResult result =
      runChild({QUILLORY_PACK, "extract", "--json", "--verbose", release("Hello-3"), dir / "out"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(nlohmann::json::parse(result.out)["folder"], dir / "out");
  EXPECT_THAT(runChild({QUILLORY_PACK, "extract", "-v", release("Hello-3"), dir / "more"}).err,
              HasSubstr("[ExtractArchiveFile]"));
}

TEST_F(Extract, WantsAnEmptyFolder) {
  const TempDir dir;
  writeFile(dir / "out/mine", "x");
  EXPECT_THAT(pack({"extract", release("Hello-3"), dir / "out"}).err, HasSubstr("is not empty"));
  EXPECT_THAT(pack({"extract", project_ / "hello.jar", dir / "new"}).err,
              HasSubstr("is no archive"));
}

}  // namespace
}  // namespace quillory::testing
