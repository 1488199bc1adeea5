#include "packager/commands/update_views.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "packager/commands/withdraw.h"
#include "packager/report/value_lines.h"
#include "tests/packager/plain_archives.h"
#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class UpdateViews : public ReleasedProject {
 protected:
  CommandResult inspect(const std::string& name) { return pack({"inspect", releasePath(name)}); }
  void releaseTwo() {
    writeFile(project_ / "notes.md", "What is new");
    for (int version = 1; version <= 2; ++version) {
      writeFile(project_ / "data", noise(1, 100'000) + std::to_string(version));
      release(config(version, "files = [\"data\"]\n",
                     "notes = \"notes.md\"\nrollout = \"7 days\"\ncritical-below = 2\n"));
    }
  }
};

TEST_F(UpdateViews, DescribeReleaseListShowsWhatItOffers) {
  releaseTwo();
  const CommandResult result = inspect("Quillory-Hello-stable-releases");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out,
              AllOf(HasSubstr("kind: release-list\n"), HasSubstr("application: Hello\n"),
                    HasSubstr("number: 2\n"), HasSubstr("issued: 2026-11-22 04:36 UTC\n"),
                    HasSubstr("expires: 2027-02-20 04:36 UTC\n"), HasSubstr("  days: 7\n"),
                    HasSubstr("critical below: 2\n"), HasSubstr("notes: What is new\n"),
                    HasSubstr("Quillory-Hello-2-from-1-delta"), HasSubstr("signatures: 1")));
  EXPECT_THAT(result.out, Not(HasSubstr("withdrawn")));
  EXPECT_THAT(inspect("Quillory-Hello-stable-releases-1").out, HasSubstr("number: 1\n"));
}

TEST_F(UpdateViews, DescribeDeltaShowsWhatItLeadsFromAndTo) {
  releaseTwo();
  EXPECT_THAT(
      inspect("Quillory-Hello-2-from-1-delta").out,
      AllOf(HasSubstr("kind: delta\n"), HasSubstr("component: Hello\n"), HasSubstr("from: 1\n"),
            HasSubstr("to: 2\n"), HasSubstr("lib/hello.jar"), HasSubstr("data")));
}

TEST_F(UpdateViews, DescribeUpdateSettingsShowsHowUpdatesAreLookedFor) {
  writeFile(project_ / "QuilloryUpdate",
            records({"1", "beta", "ask", "20", "24", "2", "1", "https://one.example/", "1",
                     pack::PublicKey::load(Project::key()).hex()}));
  const CommandResult result = pack({"inspect", project_ / "QuilloryUpdate"});
  EXPECT_THAT(result.out, AllOf(HasSubstr("kind: update-settings\n"), HasSubstr("channel: beta\n"),
                                HasSubstr("mode: ask\n"), HasSubstr("https://one.example/"),
                                HasSubstr(pack::PublicKey::load(Project::key()).fingerprint())));
}

TEST_F(UpdateViews, SayWhyAFileIsNotWhatItsNameSays) {
  for (const auto& [name, error] :
       {std::pair{"Quillory-Hello-stable-releases", ": error: is no release list: "},
        std::pair{"Quillory-Hello-2-from-1-delta", ": error: is no delta: "},
        std::pair{"QuilloryUpdate", ": error: holds no update settings: "}}) {
    writeFile(project_ / name, "text");
    const CommandResult result = pack({"inspect", project_ / name});
    EXPECT_EQ(result.status, 1) << name;
    EXPECT_THAT(result.err, HasSubstr(project_ / name + error));
  }
}

}  // namespace
}  // namespace quillory::testing
