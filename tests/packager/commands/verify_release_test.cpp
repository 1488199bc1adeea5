#include "packager/commands/verify_release.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/packager/openssl.h"
#include "tests/packager/plain_archives.h"
#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr char kList[] = "Quillory-Hello-stable-releases";

class VerifyRelease : public ReleasedProject {
 protected:
  void releaseVersion(int version, const std::string& update = "") {
    writeFile(project_ / "data", noise(1, 100'000) + std::to_string(version));
    release(config(version, "files = [\"data\"]\n", update));
  }
  pack::VerifiedRelease verify(const std::string& as = "", std::int64_t now = kSomeTime + 60) {
    return pack::verifyRelease({project_ / "dist/release",
                                "Hello",
                                "stable",
                                {pack::PublicKey::load(Project::key()).hex()},
                                as,
                                now});
  }
  std::string refusalOf(const std::string& as = "") {
    try {
      verify(as);
    } catch (const pack::PackError& e) {
      return asText(e.finding());
    }
    return "";
  }
  std::vector<std::string> namesOf(const std::vector<pack::SourceRequest>& requests) const {
    std::vector<std::string> names;
    for (const pack::SourceRequest& request : requests) names.push_back(request.name);
    return names;
  }
  // Eight bytes in the middle of a release file.
  void damage(const std::string& name) {
    std::string bytes = readFile(releasePath(name));
    bytes.replace(bytes.size() / 2, 8, "damaged!");
    writeFile(releasePath(name), bytes);
  }
  static std::int64_t lengthOf(const std::string& path) {
    return static_cast<std::int64_t>(fs::file_size(path));
  }
};

TEST_F(VerifyRelease, InstallsAllOfItWhereNothingIs) {
  releaseVersion(1);
  const pack::VerifiedRelease result = verify();
  EXPECT_THAT(namesOf(result.requests), ElementsAre(kList, "Quillory-Quillory-1-archive.p2.l2",
                                                    "Quillory-Hello-1-archive.p2.l2"));
  std::int64_t bytes = 0;
  for (const std::string& name : namesOf(result.requests)) bytes += lengthOf(releasePath(name));
  EXPECT_EQ(result.bytes, bytes);
  EXPECT_TRUE(result.findings.empty());
}

TEST_F(VerifyRelease, TakesTheDeltaAsAnOlderVersion) {
  releaseVersion(1);
  releaseVersion(2);
  const pack::VerifiedRelease result = verify("1");
  EXPECT_THAT(namesOf(result.requests), ElementsAre(kList, "Quillory-Hello-2-from-1-delta"));
  EXPECT_EQ(result.bytes,
            lengthOf(releasePath(kList)) + lengthOf(releasePath("Quillory-Hello-2-from-1-delta")));
  EXPECT_THAT(result.steps.back(), HasSubstr("installed: Hello 2, "));
  EXPECT_THAT(result.steps.back(), HasSubstr("restored from version 1"));
  EXPECT_THAT(verify("2").steps.back(), StartsWith("nothing to load"));
}

TEST_F(VerifyRelease, TellsOfADeltaThatIsOfNoUse) {
  releaseVersion(1);
  releaseVersion(2);
  damage("Quillory-Hello-2-from-1-delta");
  const pack::VerifiedRelease result = verify("1");
  EXPECT_EQ(rulesOf(result.findings), std::vector<std::string>{"delta"});
  EXPECT_THAT(namesOf(result.requests), ::testing::Contains("Quillory-Hello-2-archive.p2.l2"));
}

TEST_F(VerifyRelease, FailsWhereAClientWould) {
  EXPECT_THAT(refusalOf(), HasSubstr("is no folder"));
  releaseVersion(1);
  EXPECT_THAT(refusalOf("7"), HasSubstr("no list of version 7 is there"));
  damage("Quillory-Hello-1-archive.p2.l2");
  EXPECT_THAT(refusalOf(), HasSubstr("a client does not install it: "));
  fs::remove(releasePath("Quillory-Hello-1-archive.p2.l2"));
  EXPECT_THAT(refusalOf(), HasSubstr("a client does not install it: "));
  damage(kList);
  EXPECT_THAT(refusalOf(), HasSubstr("is refused by every client: "));
  fs::remove(releasePath(kList));
  EXPECT_THAT(refusalOf(), HasSubstr("cannot be had: the server answers 404"));
}

TEST_F(VerifyRelease, GoesOverTheSteppingStone) {
  releaseVersion(1);
  releaseVersion(2);
  releaseVersion(3, "minimum-from = 2\nstepping-stone = 2\n");
  const pack::VerifiedRelease result = verify("1");
  EXPECT_THAT(namesOf(result.requests),
              ElementsAre(kList, "Quillory-Hello-stable-releases-2",
                          "Quillory-Hello-2-from-1-delta", StartsWith("Quillory-Hello-3-from-")))
      << "from either, whichever is shorter: both are installed then";
}

// An installation that trusts the old key comes to a release whose archives the new one has signed;
// one of the new bundle knows the new key alone.
TEST_F(VerifyRelease, FollowsAChangeOfKeys) {
  releaseVersion(1);
  openssl({"genrsa", "-traditional", "-out", project_ / "new.pem", "2048"});
  writeFile(project_ / "data", noise(1, 100'000) + "2");
  std::string text = config(2, "files = [\"data\"]\n", "next-keys = [\"new.pem\"]\n");
  text.insert(text.find("salt = "), "next-key = \"new.pem\"\n");
  EXPECT_THAT(refusal(text), HasSubstr("raise updater.version"));
  text.insert(text.find("[updater]") + 10, "version = 2\n");
  release(text);
  const pack::VerifiedRelease result = verify("1");
  EXPECT_THAT(result.steps, ::testing::Contains(StartsWith("its clients trust 1 other keys")));
  EXPECT_THAT(namesOf(result.requests), ::testing::Contains("Quillory-Hello-2-from-1-delta"));
  const std::string next = pack::PublicKey::load(project_ / "new.pem").hex();
  EXPECT_NO_THROW(pack::verifyRelease(
      {project_ / "dist/release", "Hello", "stable", {next}, "", kSomeTime + 60}));
  const CommandResult bundle =
      pack({"verify", "--key", project_ / "new.pem", project_ / "dist/Hello.app"});
  EXPECT_EQ(bundle.status, 0) << bundle.out;
}

TEST_F(VerifyRelease, TellsOfRolloutsAndOfExpiredLists) {
  releaseVersion(1, "rollout = \"4 days\"\nexpires-days = 3\n");
  EXPECT_THAT(verify("", kSomeTime + 86'400).steps,
              ::testing::Contains(StartsWith("rollout: offered to 25 %")));
  const pack::VerifiedRelease late = verify("", kSomeTime + 4 * 86'400);
  EXPECT_EQ(rulesOf(late.findings), std::vector<std::string>{"expired"});
}

TEST_F(VerifyRelease, IsACommandThatTellsOfEachStep) {
  releaseVersion(1);
  const CommandResult result =
      pack({"verify-release", project_ / "dist/release", "--config", project_ / "quillory.toml"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("installed: Hello 1, "));
  EXPECT_THAT(result.out, HasSubstr(" in 3 requests\n"));
  EXPECT_THAT(result.err, HasSubstr("Quillory-Hello-1-archive.p2.l2: "));
}

}  // namespace
}  // namespace quillory::testing
