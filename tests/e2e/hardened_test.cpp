// What a hardened bundle does with archives that do not prove what they are: what is installed
// stays, and runs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/launcher_run.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// An archive that says what it is, or something else.
std::string saying(const std::string& component, const std::string& version,
                   const std::string& content) {
  return emptyEntry("qyArcSpBlock_Component1;" + component + ";" + version + ";any") + content;
}

struct Content {
  std::string updater, runtime, application;
};

Content contentOf(const std::string& gu, const std::string& app) {
  return {.updater = saying("Quillory", gu,
                            fileEntry("QuilloryLaunch", launchFileBytes()) +
                                fileEntry("report.jar", readFile(QUILLORY_REPORT_JAR))),
          .runtime = saying("JRE", "17", scriptRuntimeContent()),
          .application = saying("Demo", app, fileEntry("hello.txt", "hello from " + app + "\n"))};
}

class Hardened : public ::testing::Test {
 protected:
  struct Keys {
    const SigningKey* updater = &testKey();
    const SigningKey* runtime = &testKey();
    const SigningKey* application = &testKey();
  };

  static Tail tailOf(const std::string& gu, const std::string& app, const Content& content,
                     const Keys& keys) {
    Tail tail = quickTail();
    tail.guVersion = gu;
    tail.appVersion = app;
    tail.entries = fileEntry("lzma64", readFile(lzma64UnderTest())) +
                   fileEntry("nativesplash.png", readFile(QUILLORY_TEST_PICTURE)) +
                   emptyEntry("cacerts") + emptyEntry("verpatch.exe") +
                   fileEntry("GU.p2.l2", packedArchive(content.updater, keys.updater)) +
                   fileEntry("JRE.p2.l2", packedArchive(content.runtime, keys.runtime)) +
                   applicationEntries(content.application, keys.application);
    return tail;
  }

  ChildResult startOf(const std::string& gu, const std::string& app, const Content& content,
                      const Keys& keys) {
    const TempDir folder;
    return start(HandMadeBundle(folder.str(), tailOf(gu, app, content, keys),
                                {{"jre_name", "JRE"}, {"hardened", "true"}}),
                 user_, {"argument"});
  }
  ChildResult startGood(const std::string& gu, const std::string& app) {
    return startOf(gu, app, contentOf(gu, app), {});
  }

  /// The names in the master folder, without what each start adds.
  std::vector<std::string> installed() const { return namesIn(user_.master()); }

  TestUser user_;
};

TEST_F(Hardened, InstallsArchivesThatProveWhatTheyAre) {
  const ChildResult result = startGood("1", "3");
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
  EXPECT_EQ(readFile(user_.master() + "/Quillory-Demo-3-complete/hello.txt"), "hello from 3\n");
  for (const auto& entry : fs::recursive_directory_iterator(user_.master()))
    if (!entry.is_symlink()) {
      EXPECT_EQ(modeOf(entry.path()) & 022U, 0U) << entry.path();
    }
}

TEST_F(Hardened, LeavesNothingOfARejectedFirstInstallation) {
  const ChildResult result = startOf("1", "3", contentOf("1", "3"), {.updater = nullptr});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(installed(), ::testing::ElementsAre("QYAppsSharedConfig", "logs"));
}

TEST_F(Hardened, RunsWhatIsInstalledWhereAnArchiveIsRejected) {
  startGood("1", "3");
  startedArguments(user_);
  const std::vector<std::string> before = installed();
  const Content good = contentOf("2", "4");
  Content mixed = good;
  mixed.application = contentOf("1", "3").application;
  const struct {
    const char* name;
    Content content;
    Keys keys;
  } kCases[] = {{"an unsigned updater", good, {.updater = nullptr}},
                {"an updater of somebody else", good, {.updater = &otherKey()}},
                {"an unsigned runtime", good, {.runtime = nullptr}},
                {"an unsigned application", good, {.application = nullptr}},
                {"an older application under a newer name", mixed, {}}};
  for (const auto& [name, content, keys] : kCases) {
    SCOPED_TRACE(name);
    const ChildResult result = startOf("2", "4", content, keys);
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    EXPECT_THAT(startedArguments(user_), Contains("argument"));
    linesInOrder(result, {"[Extractor] What this bundle carries is not installed. Will run what is "
                          "there: Quillory-Quillory-1-complete"});
    EXPECT_THAT(installed(), Not(Contains("Quillory-Demo-4-complete")));
    EXPECT_THAT(installed(), Not(Contains(HasSubstr("QuilloryTemp-"))));
  }
  EXPECT_EQ(startGood("2", "4").exitStatus, 0);
  EXPECT_THAT(startedArguments(user_),
              Contains(HasSubstr("Quillory-Quillory-2-complete/QYLaunchProperties-")));
  EXPECT_EQ(readFile(user_.master() + "/Quillory-Demo-4-complete/hello.txt"), "hello from 4\n");
  EXPECT_FALSE(fs::exists(user_.master() + "/Quillory-Quillory-2-complete/.unfinished"));
}

TEST_F(Hardened, KeepsItsOwnVersionWhereItsNextCopyIsRejected) {
  startGood("1", "3");
  startedArguments(user_);
  const ChildResult result = startOf("1", "4", contentOf("1", "4"), {.application = nullptr});
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
  EXPECT_EQ(startGood("1", "4").exitStatus, 0);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
  EXPECT_TRUE(fs::exists(user_.master() + "/Quillory-Demo-4-complete/hello.txt"));
}

TEST_F(Hardened, SkipsFoldersThatAreNotWholeAndRepairsThem) {
  startGood("1", "3");
  startedArguments(user_);
  // What bundles that are not hardened leave of archives that they reject.
  for (const char* const name : {"Quillory-Quillory-9-complete", "Quillory-Demo-9-complete",
                                 "Quillory-JRE-99-complete", "Quillory-JRE-99-complete.plugin"})
    fs::create_directory(user_.master() + '/' + name);
  ChildResult result = startGood("1", "3");
  EXPECT_EQ(countLine(result, "[Extractor] Running without extraction now"), 1) << result.out;
  EXPECT_THAT(startedArguments(user_), Contains("argument"));

  result = startGood("9", "9");
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_THAT(startedArguments(user_), Contains(HasSubstr("Quillory-Quillory-9-complete/")));
  EXPECT_TRUE(fs::exists(user_.master() + "/Quillory-Demo-9-complete/hello.txt"));
}

TEST_F(Hardened, IsNotWhatOtherBundlesAre) {
  const TempDir folder;
  Content unsaid = contentOf("1", "3");
  const ChildResult result =
      start(HandMadeBundle(folder.str(), tailOf("1", "3", unsaid, {.updater = &otherKey()}),
                           {{"jre_name", "JRE"}}),
            user_);
  // By intent: a rejected archive's folder is emptied and stays.
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(namesIn(user_.master() + "/Quillory-Quillory-1-complete"), IsEmpty());
}

}  // namespace
}  // namespace quillory::testing
