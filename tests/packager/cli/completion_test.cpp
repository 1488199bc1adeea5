#include "packager/cli/completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/harness/child_process.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;

const std::vector<std::string> kCompleted = {"init",    "keygen", "bundle", "inspect",   "verify",
                                             "extract", "set",    "doctor", "completion"};

TEST(Completion, IsAScriptThatBashTakesAndThatCompletes) {
  const TempDir dir;
  const CommandResult script = pack({"completion", "bash"});
  EXPECT_EQ(script.status, 0);
  writeFile(dir / "script",
            script.out +
                "COMP_WORDS=(quillory-pack b) COMP_CWORD=1; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n"
                "COMP_WORDS=(quillory-pack keygen --b) COMP_CWORD=2; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n"
                "COMP_WORDS=(quillory-pack bundle --t) COMP_CWORD=2; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n"
                "COMP_WORDS=(quillory-pack bundle --target '') COMP_CWORD=3; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n"
                "COMP_WORDS=(quillory-pack inspect --as tai) COMP_CWORD=3; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n");
  const ChildResult result = runChild({"bash", "--norc", dir / "script"});
  EXPECT_EQ(result.out, "bundle\n--bits\n--target\nlinux macos\ntail\n") << result.err;
}

TEST(Completion, KnowsEveryCommandInEveryShell) {
  for (const char* shell : {"bash", "zsh", "fish"}) {
    const std::string script = pack({"completion", shell}).out;
    for (const std::string& command : kCompleted) {
      EXPECT_THAT(script, HasSubstr(command)) << shell;
    }
    EXPECT_THAT(script, HasSubstr("compression")) << shell;
    EXPECT_THAT(script, HasSubstr("linux macos")) << shell;
  }
}

}  // namespace
}  // namespace quillory::testing
