// An online installer copies a Java that the machine already has, if the application can use it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/online_machine.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

const std::string kNothingHere = "[JRESearch] A JRE does not seem to exist here.";
const std::string kNothingAtAll = "[JRESearch] JRE does not exist or does not have unpack200";
const std::string kAppletPlace =
    "[JRESearch] Looking at JRE /Library/Internet Plug-Ins/JavaAppletPlugin.plugin/Contents/Home/"
    "bin/java";
const std::string kIncompatible = "[JRESearch] JRE failed compatibility test";
const std::string kCopying = "[JRESearch] JRE is valid, copying...";

class SystemJre : public ::testing::Test {
 protected:
  SystemJre() { publishRuntime(server_, "17", packedScriptRuntime()); }

  Tail tail(const std::string& requiredJava = "8") {
    Tail tail = onlineTail(server_.url());
    tail.requiredJava = requiredJava;
    return tail;
  }

  /// A start that copies a Java of this machine and runs the application in it.
  ChildResult startInCopy(const std::string& requiredJava = "8") {
    const ChildResult result = machine_.start(tail(requiredJava));
    EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
    EXPECT_EQ(countLine(result, kCopying), 1);
    EXPECT_THAT(server_.targets(), IsEmpty());
    EXPECT_THAT(startedArguments(machine_.user()), Contains("argument"));
    return result;
  }

  /// A start that finds no Java that would do, and downloads one.
  ChildResult startInDownload(const std::string& requiredJava = "8",
                              const Parameters& parameters = {}) {
    const ChildResult result = machine_.start(tail(requiredJava), parameters);
    EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
    EXPECT_EQ(countLine(result, kCopying), 0);
    EXPECT_THAT(namesIn(machine_.master()), Contains("Quillory-JRE-17-complete.plugin"));
    EXPECT_THAT(startedArguments(machine_.user()), Contains("argument"));
    return result;
  }

  OnlineMachine machine_;
  HttpServer server_;
  const std::string alias_ = machine_.master() + "/Quillory-JRE-00000000000-complete";
};

TEST_F(SystemJre, IsCopiedAndRunsTheApplication) {
  const std::string home = machine_.makeScriptJre("a jre");
  machine_.linkJavaTo(home + "/bin/java");
  const ChildResult result = startInCopy();
  linesInOrder(
      result,
      {"[JRESearch] 'which java' returned '" + machine_.path("tools/java") + "'",
       "[JRESearch] Followed link " + machine_.path("tools/java") + " -> " + home + "/bin/java",
       "[JRESearch] Searching for 'bin' occurrence", "[JRESearch] Done searching for 'bin'",
       "[JRESearch] Trimmed possibleJavaExe is " + home + "/",
       "[JRESearch] Removed final slash: possibleJavaExe is " + home,
       "[JRESearch] Final possibleJavaExe is " + home,
       "[JRESearch] Looking at JRE " + home + "/bin/java",
       "[Extractor] Checking JRE version requirements: 8 vs required 8",
       "[JRESearch] JRE unpack200 exists " + home + "/bin/unpack200",
       "[Extractor] Checking for existing system JRE " + home + "/bin/java", kCopying,
       "[JREDownload] Finalising setup of new JRE 00000000000",
       "[Extractor] Renamed JRE folder to " + alias_ + ".plugin"});
  EXPECT_THAT(result.out, HasSubstr("[JRESearch] Running cp -LRf \"" + home + "\" \""));
}

TEST_F(SystemJre, ComesOutInTheLayoutOfEveryRuntime) {
  machine_.linkJavaTo(machine_.makeScriptJre("jre") + "/bin/java");
  startInCopy();
  EXPECT_EQ(fs::read_symlink(alias_ + ".plugin/Contents/Home").string(), alias_);
  EXPECT_TRUE(fs::is_regular_file(alias_ + "/lib/rt.jar"));
  EXPECT_EQ(modeOf(alias_ + "/bin/unpack200"), 0777U);
  EXPECT_THAT(namesIn(alias_ + ".plugin"), ::testing::ElementsAre("Contents"));
}

TEST_F(SystemJre, IsFoundCurrentTheNextTime) {
  machine_.linkJavaTo(machine_.makeScriptJre("jre") + "/bin/java");
  startInCopy();
  const ChildResult second = machine_.start(tail());
  EXPECT_EQ(countLine(second, "[Extractor] Running without extraction now"), 1);
  EXPECT_THAT(startedArguments(machine_.user()), Contains("argument"));
}

TEST_F(SystemJre, IsCopiedWithWhatItsLinksLeadTo) {
  const std::string home = machine_.makeScriptJre("jre");
  fs::rename(home + "/lib", machine_.path("elsewhere"));
  fs::create_directory_symlink(machine_.path("elsewhere"), home + "/lib");
  machine_.linkJavaTo(home + "/bin/java");
  startInCopy();
  EXPECT_FALSE(fs::is_symlink(alias_ + "/lib"));
  EXPECT_TRUE(fs::is_regular_file(alias_ + "/lib/rt.jar"));
}

TEST_F(SystemJre, IsFoundBehindAChainOfLinks) {
  const std::string home = machine_.makeScriptJre("jre");
  fs::create_symlink(home + "/bin/java", machine_.path("default-java"));
  machine_.linkJavaTo(machine_.path("default-java"));
  const ChildResult result = startInCopy();
  EXPECT_EQ(countLine(result, "[JRESearch] Followed link " + machine_.path("default-java") +
                                  " -> " + home + "/bin/java"),
            1);
}

TEST_F(SystemJre, BehindARelativeLinkIsLookedForFromTheWorkingFolder) {
  machine_.makeScriptJre("jre");
  machine_.linkJavaTo("../jre/bin/java");
  const ChildResult result = startInDownload();
  linesInOrder(result, {"[JRESearch] Final possibleJavaExe is ../jre",
                        "[JRESearch] Looking at JRE ../jre/bin/java", kNothingHere});
}

TEST_F(SystemJre, IsCutAtTheLastBinInItsPath) {
  const std::string home = machine_.makeScriptJre("cabinet");
  fs::rename(home + "/bin/java", home + "/java");
  machine_.linkJavaTo(home + "/java");
  const ChildResult result = startInDownload();
  EXPECT_EQ(countLine(result, "[JRESearch] Final possibleJavaExe is " + machine_.path("ca")), 1);
}

TEST_F(SystemJre, MustHaveTheRequiredVersion) {
  machine_.linkJavaTo(machine_.makeScriptJre("jre", "1.7.0_80") + "/bin/java");
  const ChildResult result = startInDownload();
  linesInOrder(result, {"[Extractor] Checking JRE version requirements: 7 vs required 8",
                        kNothingHere, kAppletPlace, kNothingAtAll});
}

// Only the second part of the version is looked at, which newer versions have for something else.
TEST_F(SystemJre, OfANewerKindOfVersionIsTakenForVersionZero) {
  machine_.linkJavaTo(machine_.makeScriptJre("jre", "11.0.2") + "/bin/java");
  EXPECT_EQ(countLine(startInDownload(),
                      "[Extractor] Checking JRE version requirements: 0 vs required 8"),
            1);
}

TEST_F(SystemJre, OfAnyVersionDoesWithoutARequirement) {
  machine_.linkJavaTo(machine_.makeScriptJre("jre", "11.0.2") + "/bin/java");
  startInCopy("");
}

TEST_F(SystemJre, MustHaveUnpack200) {
  const std::string home = machine_.makeScriptJre("jre");
  fs::remove(home + "/bin/unpack200");
  machine_.linkJavaTo(home + "/bin/java");
  linesInOrder(startInDownload(), {kNothingHere, kAppletPlace, kNothingAtAll});
}

TEST_F(SystemJre, IsNotUsedWhenTheCompatibilityClassEndsOtherwise) {
  for (const int status : {0, 1, 71, 73}) {
    SCOPED_TRACE(status);
    const OnlineMachine machine;
    machine.linkJavaTo(machine.makeScriptJre("jre", "1.8.0_202", status) + "/bin/java");
    const ChildResult result = machine.start(tail());
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    EXPECT_EQ(countLine(result, kIncompatible), 1);
    EXPECT_THAT(namesIn(machine.master()), Contains("Quillory-JRE-17-complete"));
    EXPECT_THAT(startedArguments(machine.user()), Contains("argument"));
  }
}

TEST_F(SystemJre, IsNotThereWithoutAJavaInThePath) {
  const ChildResult result = startInDownload();
  linesInOrder(result,
               {"[JRESearch] 'which java' returned ''", kNothingHere, kAppletPlace, kNothingAtAll});
  EXPECT_EQ(countLine(result, "[JRESearch] Looking at JRE /bin/java"), 0);
}

TEST_F(SystemJre, IsLookedForElsewhereInAnAutomaticTest) {
  machine_.linkJavaTo(machine_.makeScriptJre("jre") + "/bin/java");
  const ChildResult result = startInDownload("8", {{"wrapper_autotest", "false"}});
  const std::string java = "/opt/JRE_QYAutoTest/Contents/Home/bin/java";
  linesInOrder(result, {"AutoTesting - will fake possible jave exe to '" + java + "'",
                        "[JRESearch] 'which java' returned '" + java + "'",
                        "[JRESearch] Looking at JRE " + java, kNothingHere});
}

// A real runtime, made of modules, with the two things that an old one would have.
TEST_F(SystemJre, OfRealJavaTellsThatItIsCompatibleAndRunsInTheProcess) {
  const std::string home = machine_.path("real");
  fs::copy(QUILLORY_TEST_RUNTIME, home,
           fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  writeFile(home + "/lib/rt.jar", "not looked into");
  writeFile(home + "/bin/unpack200", "#!/bin/sh\nexit 1\n");
  fs::permissions(home + "/bin/unpack200", fs::perms::owner_all);
  machine_.linkJavaTo(home + "/bin/java");

  const ChildResult result = machine_.start(tail(""));
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_EQ(countLine(result, kCopying), 1);
  EXPECT_EQ(reported(result, "home"), alias_);
  EXPECT_THAT(result.out, HasSubstr("[JNILaunch] [pid=" + reported(result, "pid") + "]"));
  EXPECT_EQ(reported(result, "arg 1"), "argument");
  EXPECT_THAT(server_.targets(), IsEmpty());
}

}  // namespace
}  // namespace quillory::testing
