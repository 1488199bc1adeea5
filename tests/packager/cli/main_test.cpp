// The program itself, as a process of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

TEST(Program, EndsBySignalAndCleansUpWhenItIsInterrupted) {
  Project project;
  // Enough to compress for a while.
  std::string noise;
  unsigned state = 1;
  while (noise.size() < 30'000'000) {
    state = state * 1664525 + 1013904223;
    noise.append(reinterpret_cast<const char*>(&state), sizeof state);
  }
  writeFile(project / "data", noise);
  project.writeConfig(project.config("files = [\"data\"]\n"));
  BackgroundChild child({QUILLORY_PACK, "bundle", project / "quillory.toml"});
  ASSERT_TRUE(child.waitForOutput("packing "));
  child.sendSignal(SIGINT);
  EXPECT_EQ(child.finish().signal, SIGINT);
  EXPECT_TRUE(fs::is_empty(project / "dist"));
}

TEST(Program, FailsWhenItsOutputCannotBeWritten) {
  if (!fs::exists("/dev/full")) {
    GTEST_SKIP() << "no device that is always full";
  }
  Project project;
  const std::string bundle = bundleOf(project, project.config("[runtime]\nfolder = \"jre\"\n"));
  for (const std::string& command :
       {std::string("--help"), std::string("completion bash"), "inspect '" + bundle + "'",
        "verify '" + bundle + "'", "verify --json '" + bundle + "'", "doctor '" + bundle + "'",
        "bundle '" + project / "quillory.toml" + "'"}) {
    const ChildResult result =
        runChild({"sh", "-c", "'" QUILLORY_PACK "' " + command + " >/dev/full"});
    EXPECT_EQ(result.exitStatus, 1) << command;
    EXPECT_THAT(result.err, HasSubstr("error: standard output cannot be written\n")) << command;
  }
}

TEST(Program, SaysThatItWasInterruptedAndNotThatItsToolFailed) {
  Project project;
  writeFile(project / "jdk/bin/jdeps", "#!/bin/sh\nkill -INT $PPID\nexit 130\n");
  fs::permissions(project / "jdk/bin/jdeps", fs::perms(0755));
  writeFile(project / "jdk/bin/jlink", "#!/bin/sh\nexit 1\n");
  fs::permissions(project / "jdk/bin/jlink", fs::perms(0755));
  project.writeConfig(project.config("[runtime]\njlink = true\njdk = \"jdk\"\n"));
  const ChildResult result =
      runChild({QUILLORY_PACK, "bundle", "--target", "linux", project / "quillory.toml"});
  EXPECT_EQ(result.signal, SIGINT);
  EXPECT_THAT(result.err, HasSubstr("error: interrupted\n"));
  EXPECT_EQ(result.err.find("130"), std::string::npos) << result.err;
  EXPECT_TRUE(fs::is_empty(project / "dist"));
}

TEST(Program, FillsStandardStreamsThatAreClosed) {
  // The name of a stream can be opened only where there is one. Without it the next file to be
  // opened would get its number, and what is printed would go into that file.
  const std::pair<const char*, const char*> cases[] = {
      {"/dev/stdin", "<&-"}, {"/dev/stdout", ">&-"}, {"/dev/stderr", "2>&-"}};
  for (const auto& [stream, closing] : cases) {
    SCOPED_TRACE(stream);
    const ChildResult result = runChild(
        {"sh", "-c", std::string("exec \"$0\" inspect --as version-file \"$1\" ") + closing,
         QUILLORY_PACK, stream});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
  }
}

TEST(Program, FindsWhatItPacksBesideItself) {
  Project project;
  std::string config = project.config();
  config.erase(0, config.find("[signing]"));
  project.writeConfig(config);
  const ChildResult result = runChild({QUILLORY_PACK, "bundle", project / "quillory.toml"});
  // Without a launcher beside it, it says which file is missing.
  const bool hasLauncher = fs::exists(fs::path(QUILLORY_PACK).parent_path() / "launcher");
  EXPECT_EQ(result.exitStatus, hasLauncher ? 0 : 1) << result.err;
  EXPECT_EQ(result.out, hasLauncher ? project / "dist/Hello.app\n" : "");
}

}  // namespace
}  // namespace quillory::testing
