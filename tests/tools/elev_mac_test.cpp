// The program itself, started as the launcher starts it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/private_root.h"
#include "tests/harness/stand_in_program.h"
#include "tests/tools/hard_arguments.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

ChildResult elevMac(std::vector<std::string> arguments, const ChildOptions& options = {}) {
  arguments.insert(arguments.begin(), QUILLORY_ELEV_MAC);
  return runChild(arguments, options);
}

TEST(ElevMac, SaysHowItIsUsed) {
  const ChildResult help = elevMac({"--help"});
  EXPECT_EQ(help.exitStatus, 0);
  EXPECT_THAT(help.out, StartsWith("usage: elev_mac --prompt=TEXT PROGRAM [ARG...]\n"));
  const std::vector<std::string> wrong[] = {{},
                                            {"--prompt=x"},
                                            {"/bin/true"},
                                            {"/bin/true", "--prompt=x"},
                                            {"--prompt", "x", "/bin/true"},
                                            {"--prompts=x", "/bin/true"},
                                            {"--help", "/bin/true"}};
  for (const auto& arguments : wrong) {
    const ChildResult result = elevMac(arguments);
    EXPECT_EQ(result.exitStatus, 64);
    EXPECT_EQ(result.err, help.out);
    EXPECT_EQ(result.out, "");
  }
}

TEST(ElevMac, RefusesAProgramThatIsNotGivenByAnAbsolutePath) {
  const TempDir folder;
  writeRecorder(folder / "program", folder / "ran");
  ChildOptions options;
  options.directory = folder.str();
  options.environment = {{"PATH", folder.str()}};
  for (const std::string path : {"program", "./program", "", "~/program", "-x", "true"}) {
    const ChildResult result = elevMac({"--prompt=x", path}, options);
    EXPECT_EQ(result.exitStatus, 64);
    EXPECT_EQ(result.err, "elev_mac: PROGRAM is not an absolute path: " + path + "\n");
  }
  EXPECT_FALSE(fs::exists(folder / "ran"));
}

TEST(ElevMac, AsRootRunsTheProgramAtOnce) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  const TempDir folder;
  writeRecorder(folder / "my program", folder / "args", "echo $PPID; echo error >&2; exit 5");
  std::vector<std::string> arguments = {"--prompt=$(touch x)", folder / "my program"};
  arguments.insert(arguments.end(), hardArguments().begin(), hardArguments().end());
  ChildOptions options;
  options.environment = {{"DISPLAY", ":99"}};
  const ChildResult result = elevMac(arguments, options);
  EXPECT_EQ(result.exitStatus, 5);
  EXPECT_EQ(result.out, std::to_string(getpid()) + "\n") << "it takes the place of the tool";
  EXPECT_EQ(result.err, "error\n");
  EXPECT_EQ(recordedIn(folder / "args"), hardArguments());
}

TEST(ElevMac, AsRootSaysThatAProgramCannotBeExecuted) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  const TempDir folder;
  writeFile(folder / "text", "no program");
  ChildResult result = elevMac({"--prompt=x", folder / "missing"});
  EXPECT_EQ(result.exitStatus, 66);
  EXPECT_EQ(result.err, "elev_mac: " + (folder / "missing") +
                            " cannot be executed: No such file or directory\n");
  result = elevMac({"--prompt=x", folder / "text"});
  EXPECT_EQ(result.exitStatus, 66);
  EXPECT_EQ(result.err,
            "elev_mac: " + (folder / "text") + " cannot be executed: Permission denied\n");
}

/// As an ordinary user, with a real sudo.
class ElevMacAsUser : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateRoot::whyImpossible().empty()) GTEST_SKIP() << PrivateRoot::whyImpossible();
    if (!fs::exists("/usr/bin/sudo")) GTEST_SKIP() << "needs sudo";
    root_.emplace();
    fs::create_directory(*root_ / "opt");
    fs::copy_file(QUILLORY_ELEV_MAC, *root_ / "opt/elev_mac");
    writeRecorder(*root_ / "opt/my program", "/run/args",
                  "id -u; echo \"<$SECRET$HOME>\"; exit $(cat /run/status)");
    writeFile(*root_ / "run/status", "0");
  }

  ChildResult elevMac(std::vector<std::string> arguments, ChildOptions options = {}) {
    arguments.insert(arguments.begin(), {"/opt/elev_mac", "--prompt=My App"});
    options.unset = {"DISPLAY", "WAYLAND_DISPLAY", "SUDO_ASKPASS"};
    return root_->runAsUser(arguments, options);
  }

  std::optional<PrivateRoot> root_;
};

TEST_F(ElevMacAsUser, RunsTheProgramAsRootWithItsArguments) {
  root_->allowSudo("/opt/my\\ program");
  std::vector<std::string> arguments = {"/opt/my program"};
  arguments.insert(arguments.end(), hardArguments().begin(), hardArguments().end());
  const ChildResult result = elevMac(arguments);
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.out, StartsWith("0\n")) << result.err;
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(recordedIn(*root_ / "run/args"), hardArguments());
}

TEST_F(ElevMacAsUser, EndsWithTheProgramsStatus) {
  root_->allowSudo("ALL");
  for (const char* status : {"1", "2", "77", "126", "255"}) {
    writeFile(*root_ / "run/status", status);
    const ChildResult result = elevMac({"/opt/my program"});
    EXPECT_EQ(std::to_string(result.exitStatus), status);
    EXPECT_EQ(result.err, "");
  }
}

TEST_F(ElevMacAsUser, LeavesTheUsersEnvironmentBehind) {
  root_->allowSudo("ALL");
  ChildOptions options;
  options.environment = {{"SECRET", "handed over"}};
  EXPECT_EQ(elevMac({"/opt/my program"}, options).out, "0\n</root>\n");
}

TEST_F(ElevMacAsUser, SaysWhyNothingCouldAskForAPassword) {
  const ChildResult result = elevMac({"/opt/my program"});
  EXPECT_EQ(result.exitStatus, 77);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("elev_mac: the administrator's rights were not given\n"
                                    "elev_mac: there is no terminal on which sudo could ask for a "
                                    "password, and no rule that lets this user run the program "
                                    "without one\n"));
  EXPECT_FALSE(fs::exists(*root_ / "run/args"));
}

TEST_F(ElevMacAsUser, AsksOnTheTerminalWithThePrompt) {
  // A terminal whose user answers nothing and leaves.
  ChildOptions options;
  options.unset = {"DISPLAY", "WAYLAND_DISPLAY"};
  const ChildResult result = root_->runAsUser(
      {"script", "-qec", "/opt/elev_mac --prompt='My 100%h App' '/opt/my program'", "/dev/null"},
      options);
  EXPECT_EQ(result.exitStatus, 77);
  EXPECT_THAT(result.out, HasSubstr("My 100%h App: "));
  EXPECT_THAT(result.out, HasSubstr("elev_mac: the administrator's rights were not given\r\n"));
  EXPECT_THAT(result.out, Not(HasSubstr("there is no terminal")));
}

TEST_F(ElevMacAsUser, IsDeniedByARuleForAnotherProgram) {
  root_->allowSudo("/usr/bin/true");
  EXPECT_EQ(elevMac({"/opt/my program"}).exitStatus, 77);
  EXPECT_FALSE(fs::exists(*root_ / "run/args"));
  EXPECT_EQ(elevMac({"/usr/bin/true"}).exitStatus, 0);
}

TEST_F(ElevMacAsUser, TakesNoToolFromThePath) {
  root_->makeUserFolder("/planted");
  for (const char* name : {"sudo", "pkexec"})
    writeRecorder(*root_ / (std::string("planted/") + name), "/planted/ran");
  root_->allowSudo("ALL");
  ChildOptions options;
  options.environment = {{"PATH", "/planted:/usr/sbin:/usr/bin:/bin"}};
  EXPECT_THAT(elevMac({"/opt/my program"}, options).out, StartsWith("0\n"));
  EXPECT_FALSE(fs::exists(*root_ / "planted/ran"));
}

TEST_F(ElevMacAsUser, AsksForNothingWhenTheProgramCannotBeExecuted) {
  root_->allowSudo("ALL");
  writeFile(*root_ / "opt/text", "no program");
  ChildResult result = elevMac({"/opt/missing"});
  EXPECT_EQ(result.exitStatus, 66);
  EXPECT_EQ(result.err, "elev_mac: /opt/missing cannot be executed: No such file or directory\n");
  for (const char* path : {"/opt/text", "/opt"}) {
    result = elevMac({path});
    EXPECT_EQ(result.exitStatus, 66);
    EXPECT_EQ(result.err,
              std::string("elev_mac: ") + path + " cannot be executed: Permission denied\n");
  }
}

TEST_F(ElevMacAsUser, FindsAProgramThatOnlyRootCanSee) {
  root_->allowSudo("ALL");
  fs::create_directory(*root_ / "opt/closed");
  fs::rename(*root_ / "opt/my program", *root_ / "opt/closed/program");
  chmod((*root_ / "opt/closed").c_str(), 0700);
  EXPECT_THAT(elevMac({"/opt/closed/program"}).out, StartsWith("0\n"));
}

TEST_F(ElevMacAsUser, IsNotRootWhenSomeoneMadeItSetuid) {
  chmod((*root_ / "opt/elev_mac").c_str(), 04755);
  const ChildResult result = elevMac({"/opt/my program"});
  EXPECT_NE(result.exitStatus, 0);
  EXPECT_FALSE(fs::exists(*root_ / "run/args")) << result.out;
}

}  // namespace
}  // namespace quillory::testing
