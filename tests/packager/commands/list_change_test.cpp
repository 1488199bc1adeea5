#include "packager/commands/list_change.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/commands/output_place.h"
#include "tests/packager/openssl.h"
#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr std::int64_t kDay = 86'400;

class ChangeList : public ReleasedProject {
 protected:
  ChangeList() { release(config(1)); }

  pack::ChangedList change(const std::string& text, const pack::ListChange& change) {
    std::ostringstream out;
    pack::Reporter reporter(out, said_, {});
    return pack::changeList(loaded(text), {project_ / "dist", "", kSomeTime + 10 * kDay}, change,
                            reporter);
  }
  std::string refusalOf(const std::string& text) {
    try {
      change(text, [](ReleaseList&, const pack::ReleaseFolder&) {});
    } catch (const pack::RejectedInput& e) {
      return asText(e.findings().at(0));
    }
    return "";
  }
};

TEST_F(ChangeList, IssuesTheListAnewUnderTheNextNumber) {
  const ReleaseList before = list();
  const pack::ChangedList changed =
      change(config(1), [](ReleaseList& list, const pack::ReleaseFolder&) { list.notes = "new"; });
  EXPECT_EQ(changed.path, releasePath("Quillory-Hello-stable-releases"));
  ReleaseList expected = before;
  expected.number = 2;
  expected.issued = kSomeTime + 10 * kDay;
  expected.expires = kSomeTime + 100 * kDay;
  expected.notes = "new";
  EXPECT_EQ(list(), expected);
  EXPECT_EQ(readFile(releasePath("Quillory-Hello-stable-releases-2")), readFile(changed.path));
  EXPECT_EQ(listIn("Quillory-Hello-stable-releases-1"), before);
}

TEST_F(ChangeList, LeavesTheListWhereTheChangeIsRefused) {
  EXPECT_THROW(change(config(1),
                      [](ReleaseList&, const pack::ReleaseFolder&) {
                        throw pack::RejectedInput(pack::Findings(1));
                      }),
               pack::RejectedInput);
  EXPECT_EQ(list().number, 1);
  EXPECT_FALSE(fs::exists(releasePath("Quillory-Hello-stable-releases-2")));
}

TEST_F(ChangeList, LeavesTheListInForceWhereTheNewOneCannotBePut) {
  fs::create_directories(releasePath("Quillory-Hello-stable-releases-2"));
  EXPECT_THROW(change(config(1), [](ReleaseList&, const pack::ReleaseFolder&) {}), pack::PackError);
  EXPECT_EQ(list().number, 1);
}

TEST_F(ChangeList, NeedsAList) {
  fs::remove_all(project_ / "dist/release");
  EXPECT_THAT(refusalOf(config(1)), HasSubstr("[no-release]"));
}

TEST_F(ChangeList, LeavesKeysToReleases) {
  openssl({"genrsa", "-traditional", "-out", project_ / "new.pem", "2048"});
  std::string text = config(1, "", "next-keys = [\"new.pem\"]\n");
  text.insert(text.find("salt = "), "next-key = \"new.pem\"\n");
  EXPECT_THAT(refusalOf(text), HasSubstr("keys change with the archives that they sign "
                                         "[next-keys]"));
  // Once a release has brought them, its list is issued anew with both signatures.
  text.replace(text.find("version = 1\n"), 12, "version = 2\n");
  text.insert(text.find("[updater]") + 10, "version = 2\n");
  release(text);
  const std::string next = pack::PublicKey::load(project_ / "new.pem").hex();
  change(text, [](ReleaseList&, const pack::ReleaseFolder&) {});
  for (const std::string& key : {next, pack::PublicKey::load(Project::key()).hex()}) {
    const ReleaseListVerdict verdict =
        readReleaseList(releasePath("Quillory-Hello-stable-releases"), {key});
    ASSERT_TRUE(verdict.list.has_value()) << verdict.refusal;
    EXPECT_EQ(verdict.list->number, 3);
    EXPECT_EQ(verdict.keysFromNowOn, std::vector<std::string>{next});
  }
}

}  // namespace
}  // namespace quillory::testing
