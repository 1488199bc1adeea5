#include "packager/commands/train.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/report/exit_statuses.h"
#include "tests/harness/child_process.h"
#include "tests/harness/stand_in_program.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::EndsWith;
using ::testing::HasSubstr;

// The project's runtime has a script in the place of java, which writes a list as a JVM does.
class Train : public ::testing::Test {
 protected:
  Train() {
    writeFile(project_ / "jre/lib/classlist", "java/lang/Object\n");
    runs("exit 0");
    config_ = project_.writeConfig(project_.config(kRuntime));
  }

  // The run writes `listed`, and then does what `then` says.
  void runs(const std::string& then,
            const std::string& listed = "java/util/Map id: 1\\njava/lang/Object id: 0\\n") {
    writeRecorder(project_ / "jre/bin/java", project_ / "arguments",
                  "for each in \"$@\"; do case $each in -XX:DumpLoadedClassList=*)\n"
                  "  printf '" +
                      listed +
                      "' >\"${each#*=}\" ;; esac; done\n"
                      "echo printed by the application\n" +
                      then);
  }
  std::string list() const { return project_ / "quillory.classlist"; }
  CommandResult train(const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments = {"train", config_, "--no-cache"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return pack(arguments);
  }
  // A run that is none to keep: what it says, with the list of an earlier one still there.
  std::string failure() {
    writeFile(list(), "of an earlier run\n");
    const CommandResult result = train();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(readFile(list()), "of an earlier run\n");
    return result.err;
  }

  Project project_;
  std::string config_;
};

TEST_F(Train, KeepsTheClassesOfJavaBesideTheConfiguration) {
  const CommandResult result = train();
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, list() + '\n');
  EXPECT_THAT(readFile(list()), EndsWith(".\njava/lang/Object\njava/util/Map\n"));
  EXPECT_THAT(result.err,
              AllOf(HasSubstr("end it: close its window, or choose Quit\n"),
                    HasSubstr("kept 2 classes of Java, 1 of them not in the runtime's own list\n"),
                    HasSubstr("Commit it with the configuration, then: quillory-pack bundle\n")));
}

TEST_F(Train, StartsTheApplicationWithWhatStandsBehindTheDashes) {
  const CommandResult result = train({"--", "--open", "a b", "--", "-q"});
  EXPECT_EQ(result.status, 0) << result.err;
  std::vector<std::string> last = recordedIn(project_ / "arguments");
  last.erase(last.begin(), last.end() - 5);
  EXPECT_EQ(last,
            (std::vector<std::string>{"com.example.hello.Hello", "--open", "a b", "--", "-q"}));
}

TEST_F(Train, TakesItsFilesAsTheyAreInstalled) {
  writeFile(project_ / "notes/one.txt", "x");
  config_ = project_.writeConfig(project_.config(
      "files = [\"notes\"]\nworking-directory = \"application\"\n" + std::string(kRuntime)));
  runs("test -f notes/one.txt && test -f lib/hello.jar");
  const CommandResult result = train();
  EXPECT_EQ(result.status, 0) << result.err;
}

TEST_F(Train, WritesTheListToAnotherPlace) {
  const CommandResult result = train({"-o", project_ / "other.list"});
  EXPECT_EQ(result.out, project_ / "other.list\n");
  EXPECT_FALSE(fs::exists(list()));
}

TEST_F(Train, WhatTheApplicationPrintsIsNoResult) {
  const ChildResult result = runChild({QUILLORY_PACK, "train", config_, "--json"});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(result.out, AllOf(HasSubstr("\"classes\": 2"), HasSubstr("\"more\": 1")));
  EXPECT_THAT(result.out, Not(HasSubstr("printed by the application")));
  EXPECT_THAT(result.err, HasSubstr("printed by the application\n"));
}

TEST_F(Train, ARunThatFailsLeavesTheListOfAnEarlierOne) {
  runs("exit 3");
  EXPECT_THAT(failure(), HasSubstr("error: the application ended with status 3, so nothing of it "
                                   "is kept\n  -> see that it runs by itself"));
  runs("kill -9 $$");
  EXPECT_THAT(failure(), HasSubstr("the application ended by signal 9"));
}

TEST_F(Train, ARunWithoutAListLeavesTheListOfAnEarlierOne) {
  runs("exit 0", "");
  EXPECT_THAT(failure(), HasSubstr("error: Java left no list of the classes that it loaded\n"));
  runs("exit 0", "# nothing\\n");
  EXPECT_THAT(failure(), HasSubstr("Java left no list"));
  writeProgram(project_ / "jre/bin/java", "#!/bin/sh\nexit 0\n");
  EXPECT_THAT(failure(), HasSubstr("Java left no list"));
}

TEST_F(Train, ARunThatIsInterruptedLeavesTheListOfAnEarlierOne) {
  writeFile(list(), "of an earlier run\n");
  runs("kill -INT $PPID; exit 0");
  const ChildResult result = runChild({QUILLORY_PACK, "train", config_});
  EXPECT_EQ(result.exitStatus == 0, false);
  EXPECT_EQ(readFile(list()), "of an earlier run\n");
}

TEST_F(Train, NeedsARuntimeThatIsPacked) {
  config_ = project_.writeConfig(project_.config());
  const CommandResult result = train();
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("error: the list is for the runtime that is packed, and there "
                                    "is none [no-runtime]"));
}

TEST_F(Train, TakesABundleApartAndRunsWhatItCarries) {
  const std::string bundle = bundleOf(project_, project_.config(kRuntime));
  fs::remove_all(project_ / "jre");
  const CommandResult result =
      pack({"train", bundle, "-o", project_ / "of-bundle.list", "--", "x"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(readFile(project_ / "of-bundle.list"),
              EndsWith("\njava/lang/Object\njava/util/Map\n"));
  EXPECT_THAT(result.err, HasSubstr("Put it beside the configuration"));
  EXPECT_EQ(recordedIn(project_ / "arguments").back(), "x");
}

TEST_F(Train, ABundleWithoutARuntimeIsNotTrained) {
  const std::string bundle = bundleOf(project_, project_.config());
  const CommandResult result = pack({"train", bundle});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err,
              HasSubstr("carries no runtime\n  -> train with its configuration instead"));
}

TEST_F(Train, TheNextBundleHasTheListInItsRuntime) {
  ASSERT_EQ(train().status, 0);
  const std::string bundle = bundleOf(project_, project_.config(kRuntime));
  const std::string archive = project_ / "dist/release/Quillory-JRE-170000900-archive.p2.l2";
  ASSERT_EQ(pack({"extract", archive, project_ / "runtime"}).status, 0);
  EXPECT_EQ(readFile(project_ / "runtime/Contents/Home/lib/classlist"),
            "java/lang/Object\njava/util/Map\n");
}

}  // namespace
}  // namespace quillory::testing
