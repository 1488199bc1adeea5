#include "packager/commands/release.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <future>

#include "support/folder_listing.h"
#include "tests/harness/child_process.h"
#include "tests/packager/openssl.h"
#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class Release : public ReleasedProject {
 protected:
  std::string sha256Of(const std::string& path) const {
    return runChild({"sha256sum", path}).out.substr(0, 64);
  }
  // The plain archive, as the independent tool makes it.
  std::string plain(const std::string& name) const {
    writeFile(project_ / "plain", runChild({"xz", "--format=lzma", "-dc", releasePath(name)}).out);
    return project_ / "plain";
  }
};

TEST_F(Release, MakesArchivesVersionFilesAndTheList) {
  const pack::ReleaseResult result = release(config(1));
  EXPECT_EQ(result.number, 1);
  EXPECT_EQ(result.list, releasePath("Quillory-Hello-stable-releases"));
  EXPECT_EQ(result.bundle.bundle, project_ / "dist/Hello.app");
  EXPECT_THAT(namesIn(project_ / "dist/release"),
              ElementsAre("Quillory-Hello-1-archive.p2.l2", "Quillory-Hello-stable-releases",
                          "Quillory-Hello-stable-releases-1", "Quillory-Hello-version.txt",
                          "Quillory-Quillory-1-archive.p2.l2", "Quillory-Quillory-version.txt"));
  EXPECT_EQ(readFile(releasePath("Quillory-Hello-stable-releases")),
            readFile(releasePath("Quillory-Hello-stable-releases-1")));
}

TEST_F(Release, NamesWhatMayBeFetchedWithItsLengthsAndHashes) {
  writeFile(project_ / "jre/release", "JAVA_VERSION=\"17.0.9\"\n");
  release(config(1, "display-version = \"1.0 beta\"\n", "[runtime]\nfolder = \"jre\"\n"));
  const ReleaseList made = list();
  EXPECT_EQ(made.application, "Hello");
  EXPECT_EQ(made.channel, "stable");
  EXPECT_EQ(made.platform, "linux");
  EXPECT_EQ(made.number, 1);
  EXPECT_EQ(made.issued, kSomeTime);
  EXPECT_EQ(made.expires, kSomeTime + 90 * 86400);
  ASSERT_EQ(made.components.size(), 3u);
  EXPECT_EQ(made.components[0].role, "updater");
  EXPECT_EQ(made.components[1].name, "JRE");
  EXPECT_EQ(made.components[1].version, "170000900");
  const ReleaseComponent& app = made.components[2];
  EXPECT_EQ(app.shownVersion, "1.0 beta");
  EXPECT_EQ(app.archive.name, "Quillory-Hello-1-archive.p2.l2");
  EXPECT_EQ(app.archive.length,
            static_cast<std::int64_t>(fs::file_size(releasePath(app.archive.name))));
  EXPECT_EQ(app.archive.sha256, sha256Of(releasePath(app.archive.name)));
  EXPECT_EQ(app.plainSha256, sha256Of(plain(app.archive.name)));
  EXPECT_EQ(app.plainLength, static_cast<std::int64_t>(fs::file_size(project_ / "plain")));
  // Two files: the jar and the launch file.
  EXPECT_GT(app.installedLength, static_cast<std::int64_t>(fs::file_size(QUILLORY_HELLO_JAR)) / 2);
  EXPECT_LT(app.installedLength, app.plainLength);
}

// Whatever the settings of its launcher.
TEST_F(Release, HasArchivesThatSayWhatTheyAre) {
  release(config(1, "", "[install]\nhardened = false\n"));
  EXPECT_THAT(readFile(plain("Quillory-Hello-1-archive.p2.l2")),
              StartsWith(std::string("0\0qyArcSpBlock_Component1;Hello;1;linux\0", 40)));
  EXPECT_THAT(readFile(plain("Quillory-Quillory-1-archive.p2.l2")),
              StartsWith(std::string("0\0qyArcSpBlock_Component1;Quillory;1;linux\0", 43)))
      << "it has programs for one system";
  EXPECT_EQ(readFile(project_ / "dist/Hello.app/Contents/Resources/AppParams.excludefromsigning")
                .find("hardened"),
            std::string::npos);
}

TEST_F(Release, CountsOnAndLeavesEarlierArchivesAsTheyAre) {
  release(config(1));
  const std::string first = readFile(releasePath("Quillory-Hello-1-archive.p2.l2"));
  const std::string updater = readFile(releasePath("Quillory-Quillory-1-archive.p2.l2"));
  EXPECT_EQ(release(config(2)).number, 2);
  EXPECT_EQ(list().components.at(1).version, "2");
  EXPECT_EQ(listIn("Quillory-Hello-stable-releases-1").components.at(1).version, "1");
  EXPECT_EQ(readFile(releasePath("Quillory-Hello-1-archive.p2.l2")), first);
  EXPECT_EQ(readFile(releasePath("Quillory-Quillory-1-archive.p2.l2")), updater);
}

// A salt that is drawn by lot gives other bytes each time.
TEST_F(Release, TakesTheArchiveOfAVersionThatWasReleasedAlready) {
  std::string text = config(1);
  text.erase(text.find("salt = \"derived\"\n"), 17);
  release(text);
  const std::string first = readFile(releasePath("Quillory-Hello-1-archive.p2.l2"));
  EXPECT_EQ(release(text).number, 2);
  EXPECT_EQ(readFile(releasePath("Quillory-Hello-1-archive.p2.l2")), first);
  EXPECT_THAT(said_.str(), HasSubstr("the application is the one of an earlier release\n"));
  EXPECT_EQ(list().components, listIn("Quillory-Hello-stable-releases-1").components);
}

TEST_F(Release, RefusesAVersionThatWasUsedForOtherContent) {
  release(config(2));
  writeFile(project_ / "more.txt", "more");
  EXPECT_EQ(refusal(config(2, "files = [\"more.txt\"]\n")),
            releasePath("Quillory-Hello-2-archive.p2.l2") +
                ": error: version 2 of \"Hello\" was released with other content, or signed by "
                "another key [version-used]\n  -> raise application.version");
  EXPECT_THAT(refusal(config(3, "", "check-hours = 12\n")), HasSubstr("raise updater.version"));
  EXPECT_EQ(list().number, 1) << "nothing has changed";
  EXPECT_FALSE(fs::exists(releasePath("Quillory-Hello-3-archive.p2.l2")));
}

TEST_F(Release, RefusesAVersionBelowOneThatWasReleased) {
  release(config(5));
  EXPECT_THAT(refusal(config(4)),
              HasSubstr("application.version is 4, and version 5 was released already "
                        "[version-order]"));
}

TEST_F(Release, TakesANumberThatIsLargerAndNoOther) {
  pack::ReleaseOptions with = options();
  with.number = 10;
  EXPECT_EQ(release(config(1), with).number, 10);
  EXPECT_THAT(refusal(config(2), with), HasSubstr("release 10 is not above the newest one here, "
                                                  "which is 10"));
  EXPECT_EQ(release(config(2)).number, 11);
}

TEST_F(Release, KeepsChannelsApartAndTheirArchivesTogether) {
  release(config(1));
  pack::ReleaseOptions beta = options();
  beta.channel = "beta";
  EXPECT_EQ(release(config(2), beta).number, 1);
  EXPECT_EQ(list("beta").components.at(1).version, "2");
  EXPECT_EQ(list().components.at(1).version, "1");
  EXPECT_EQ(readFile(releasePath("Quillory-Hello-version.txt")), "1\n") << "of the main channel";
  writeFile(project_ / "more.txt", "more");
  EXPECT_THAT(refusal(config(2, "files = [\"more.txt\"]\n")), HasSubstr("[version-used]"));
  EXPECT_EQ(release(config(2)).number, 2) << "what was tested is what everybody gets";
}

TEST_F(Release, IsNotMixedWithThoseForAnotherSystem) {
  release(config(1));
  // As if the folder had been used for Macs.
  const pack::SigningKey key = pack::SigningKey::load(Project::key());
  ReleaseList other = list();
  other.platform = "macos";
  other.number = 2;
  pack::writeReleaseList(releasePath("Quillory-Hello-stable-releases"), other, {&key},
                         pack::Salt::kDerived);
  EXPECT_THAT(refusal(config(2)),
              HasSubstr("the releases in this folder are for macos, and this one is for linux "
                        "[platform]"));
}

TEST_F(Release, WantsInstallationsThatLookForIt) {
  std::string text = config(1);
  text.erase(text.find("mode = "), text.find('\n', text.find("mode = ")) - text.find("mode = "));
  EXPECT_THAT(refusal(text), HasSubstr("[no-client]"));
  EXPECT_FALSE(fs::exists(project_ / "dist"));
}

// The same bytes for the same input, the time aside.
TEST_F(Release, HasTheSameBytesForTheSameInput) {
  release(config(1));
  const std::string first = readFile(releasePath("Quillory-Hello-stable-releases"));
  fs::remove_all(project_ / "dist");
  release(config(1));
  EXPECT_EQ(readFile(releasePath("Quillory-Hello-stable-releases")), first);
}

// A failure at any step leaves a list, and what it names.
TEST_F(Release, IsMadeInItsTurnWhereTwoAreMadeAtOnce) {
  release(config(1));
  const auto makeOne = [this](int version) {
    return [this, made = loaded(config(version))] {
      std::ostringstream out;
      std::ostringstream err;
      pack::Reporter reporter(out, err, {});
      try {
        pack::makeRelease(made, options(), reporter);
        return true;
      } catch (const pack::RejectedInput& e) {
        // Its turn came behind that of a higher version.
        EXPECT_EQ(e.findings().at(0).rule, "version-order");
        return false;
      }
    };
  };
  const auto second = makeOne(2);
  const auto third = makeOne(3);
  std::future<bool> other = std::async(std::launch::async, second);
  EXPECT_TRUE(third());
  const bool areBothMade = other.get();
  const std::string newest = areBothMade ? "3" : "2";
  EXPECT_EQ(listIn("Quillory-Hello-stable-releases-" + newest).components.back().version, "3");
  EXPECT_EQ(list().number, std::stoi(newest)) << "no number was given twice";
  if (areBothMade) {
    EXPECT_EQ(listIn("Quillory-Hello-stable-releases-2").components.back().version, "2");
  }
}

TEST_F(Release, LeavesTheEarlierReleaseWhenThisOneFails) {
  release(config(1));
  // A folder cannot be replaced by a file: here the last step but one fails.
  fs::remove(releasePath("Quillory-Hello-version.txt"));
  fs::create_directories(releasePath("Quillory-Hello-version.txt/taken"));
  EXPECT_THAT(refusal(config(2)), HasSubstr("cannot be put in place"));
  EXPECT_EQ(list().number, 1);
  EXPECT_EQ(sha256Of(releasePath(list().components.at(1).archive.name)),
            list().components.at(1).archive.sha256);
  fs::remove_all(releasePath("Quillory-Hello-version.txt"));
  writeFile(project_ / "more.txt", "more");
  EXPECT_EQ(release(config(2, "files = [\"more.txt\"]\n")).number, 2) << "nobody has seen it";
}

TEST_F(Release, IsACommandWithADocumentOfItsOwn) {
  const CommandResult result =
      pack({"release", "--json", "--target", "linux", project_.writeConfig(config(1))});
  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_THAT(result.out, HasSubstr("\"number\": 1"));
  EXPECT_THAT(result.out, HasSubstr("\"role\": \"application\""));
  EXPECT_EQ(pack({"release", "-q", "--target", "linux", project_ / "quillory.toml"}).out,
            "release 2: " + releasePath("Quillory-Hello-stable-releases") + '\n');
}

}  // namespace
}  // namespace quillory::testing
