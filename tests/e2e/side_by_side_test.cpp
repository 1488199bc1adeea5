// Several starts of one bundle at the same time: one installs, and all bring the application.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <sstream>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/eventually.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;

/// As `java` of the runtime: takes half a second to prepare itself, and notes what it gets in a
/// file of its own beside the bundle. Like the real one it takes its launch properties away.
constexpr char kStartedJava[] =
    "#!/bin/sh\n"
    "[ \"$1\" = -Xshare:dump ] && { sleep 0.5; exit 0; }\n"
    "for argument in \"$@\"; do\n"
    "  case $argument in\n"
    "    */QYLaunchProperties-*) rm \"$argument\" && echo properties ;;\n"
    "    *) echo \"$argument\" ;;\n"
    "  esac\n"
    "done >\"${0%/*/*/*}/starting-$$\" 2>&1\n"
    "mv \"${0%/*/*/*}/starting-$$\" \"${0%/*/*/*}/started-$$\"\n";

Tail tailWithThatJava() {
  Tail tail = quickTail();
  const std::string runtime = folderEntry("Contents") +
                              fileEntry("Contents/Home/bin/java", kStartedJava) +
                              fileEntry("Contents/Home/lib/rt.jar", "not looked into");
  tail.entries = updaterEntries() + fileEntry("JRE.p2.l2", packedArchive(runtime, &testKey())) +
                 applicationEntries(fileEntry("hello.txt", "hello from version 3\n"));
  return tail;
}

class SideBySide : public ::testing::TestWithParam<int> {
 protected:
  /// What the applications have noted, one text an application, once there are `count`.
  std::vector<std::string> started(std::size_t count) const {
    std::vector<std::string> notes;
    (void)eventually([&] {
      notes.clear();
      for (const std::string& name : namesIn(user_.master()))
        if (name.starts_with("started-")) notes.push_back(readFile(user_.master() + '/' + name));
      return notes.size() >= count;
    });
    return notes;
  }

  std::vector<ChildResult> startAtOnce(int count) {
    const HandMadeBundle bundle(folder_.str(), tailWithThatJava(), {{"jre_name", "JRE"}});
    std::vector<std::unique_ptr<BackgroundChild>> children;
    for (int i = 0; i < count; ++i)
      children.push_back(std::make_unique<BackgroundChild>(
          std::vector<std::string>{bundle.executable(), "start " + std::to_string(i)},
          user_.options()));
    std::vector<ChildResult> results;
    for (const auto& child : children) results.push_back(child->finish());
    return results;
  }

  TempDir folder_;
  TestUser user_;
};

TEST_P(SideBySide, FirstStartsAllBringTheApplication) {
  const int count = GetParam();
  const std::vector<ChildResult> results = startAtOnce(count);
  int installations = 0;
  for (const ChildResult& result : results) {
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    installations += countLine(result, "[Extractor] Extracted GU and GU Version");
    EXPECT_EQ(countLine(result, "+++ Start: Launching"), 1) << result.out;
  }
  EXPECT_EQ(installations, 1) << "the others find it done";

  const std::vector<std::string> notes = started(results.size());
  EXPECT_EQ(notes.size(), results.size());
  EXPECT_THAT(notes, Each(HasSubstr("\nproperties\n")));
  std::set<std::string> who;
  for (const std::string& note : notes) who.insert(note.substr(note.rfind("start ")));
  EXPECT_EQ(who.size(), results.size());
}

TEST_P(SideBySide, FirstStartsLeaveNothingElse) {
  startAtOnce(GetParam());
  std::vector<std::string> foreign;
  for (const auto& entry : fs::recursive_directory_iterator(user_.master())) {
    const std::string name = entry.path().filename().string();
    for (const char* const kind : {"QuilloryTemp-", ".unfinished", ".replaced", ".java-"})
      if (name.starts_with(kind)) foreign.push_back(entry.path().string());
    if (name.ends_with(".part")) foreign.push_back(entry.path().string());
  }
  EXPECT_THAT(foreign, ::testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Starts, SideBySide, ::testing::Values(2, 8));

}  // namespace
}  // namespace quillory::testing
