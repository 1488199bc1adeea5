#include "packager/commands/identity_checks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/packager/finished_bundle.h"
#include "tests/packager/rules_of.h"

namespace quillory::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kHardened[] = "[install]\nhardened = true\n[runtime]\nfolder = \"jre\"\n";

// What is said of a release archive of that name.
std::string complaintOf(const std::string& name, const std::optional<ArchiveIdentity>& said) {
  pack::Findings findings;
  pack::checkReleaseIdentity("dist/" + name, said, findings);
  return findings.empty() ? "" : asText(findings.at(0));
}

TEST(CheckReleaseIdentity, ComparesTheNameOfTheFile) {
  const ArchiveIdentity jre{"JRE", "17", "linux"};
  EXPECT_EQ(complaintOf("Quillory-JRE-17-archive.p2.l2", jre), "");
  EXPECT_EQ(complaintOf("Quillory-JRE-18-archive.p2.l2", jre),
            "dist/Quillory-JRE-18-archive.p2.l2: error: the archive is JRE 17 (linux), and is not "
            "named so [identity]\n  -> somebody has exchanged archives: copy the release files "
            "again");
  EXPECT_NE(complaintOf("Quillory-App-17-archive.p2.l2", jre), "");
  EXPECT_EQ(complaintOf("mine.p2.l2", jre), "") << "a name that says nothing";
  EXPECT_EQ(complaintOf("Quillory-JRE-18-archive.p2.l2", std::nullopt), "");
}

class Identities : public FinishedBundle {
 protected:
  Identities() { bundle_ = bundleOf(project_, project_.config(kHardened)); }

  // Exchanges the archives of two places in the tail, names and lengths with them.
  static std::string withArchive(const std::string& tailBytes, const std::string& entry,
                                 const std::string& archive) {
    const std::string head = std::string("0\0", 2) + entry + '\0';
    const std::size_t at = tailBytes.find(head);
    const std::size_t digits = at + head.size();
    const std::size_t content = tailBytes.find('\0', digits) + 1;
    const std::size_t length = std::stoul(tailBytes.substr(digits));
    return tailBytes.substr(0, digits) + std::to_string(archive.size()) + '\0' + archive +
           tailBytes.substr(content + length);
  }
};

TEST_F(Identities, AreWhatTheArchivesOfAHardenedBundleSay) {
  const CommandResult verified = pack({"verify", bundle_});
  EXPECT_EQ(verified.status, 0) << verified.err;
  EXPECT_EQ(pack({"doctor", bundle_}).status, 0);
  EXPECT_THAT(pack({"inspect", bundle_}).out,
              AllOf(HasSubstr("hardened = true"), HasSubstr("is: Quillory 1 (any)\n"),
                    HasSubstr("is: JRE 170000900 (linux)\n"), HasSubstr("is: Hello 3 (linux)\n")));
  EXPECT_EQ(pack({"verify", "--key", Project::key(), release("Hello-3")}).status, 0);
  const std::string folder = project_ / "extracted";
  EXPECT_EQ(pack({"extract", "--key", Project::key(), release("Hello-3"), folder}).status, 0);
  EXPECT_EQ(readFile(folder + "/lib/hello.jar"), readFile(project_ / "hello.jar"));
}

TEST_F(Identities, TellOfAnArchiveInThePlaceOfAnother) {
  const std::string good = readFile(tail());
  const std::string application = readFile(release("Hello-3"));
  writeFile(tail(), withArchive(good, "GU.p2.l2", application));
  for (const char* command : {"verify", "doctor"}) {
    const CommandResult result = pack({command, bundle_});
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_THAT(result.err,
                HasSubstr("GU.p2.l2: error: the archive is Hello 3 (linux), in the place "
                          "of Quillory 1 (linux) [identity]"));
  }
  std::string older = project_.config(kHardened);
  older.replace(older.find("version = 3"), 11, "version = 2");
  bundleOf(project_, older);
  bundle_ = bundleOf(project_, project_.config(kHardened));
  writeFile(tail(), withArchive(good, "App.p2.l2", readFile(release("Hello-2"))));
  EXPECT_THAT(pack({"verify", bundle_}).err,
              HasSubstr("the archive is Hello 2 (linux), in the place of Hello 3 (linux)"));
}

TEST_F(Identities, AreMissedWhereTheBundleIsHardened) {
  const std::string plain =
      bundleOf(project_, project_.config("[install]\nhardened = false\n" + std::string(kRuntime)));
  EXPECT_THAT(pack({"inspect", plain}).out,
              AllOf(Not(HasSubstr("hardened")), Not(HasSubstr(" is: "))));
  EXPECT_EQ(pack({"verify", plain}).status, 0);
  ASSERT_EQ(pack({"set", plain, "hardened=true"}).status, 0);
  EXPECT_THAT(pack({"verify", plain}).err,
              HasSubstr("the archive does not say what it is: a hardened launcher refuses it "
                        "[identity]"));
  EXPECT_EQ(pack({"doctor", plain}).status, 1);
  EXPECT_THAT(pack({"set", plain, "hardened=yes"}).err, HasSubstr("is \"true\" or \"false\""));
}

TEST_F(Identities, DoNotStandForASignature) {
  const std::string plain = project_ / "plain";
  const CommandResult packed = pack(
      {"bundle", "--unsigned", "-o", plain, "-v", project_.writeConfig(project_.config(kRuntime))});
  ASSERT_EQ(packed.status, 0) << packed.err;
  EXPECT_THAT(packed.err, HasSubstr("the bundle is not hardened, because its archives are not "
                                    "signed [hardened]"));
  ASSERT_EQ(pack({"set", plain + "/Hello.app", "hardened=true"}).status, 0);
  EXPECT_THAT(pack({"verify", plain + "/Hello.app"}).err,
              HasSubstr("the archive is not signed: a hardened launcher refuses it [identity]"));
  const CommandResult asked =
      pack({"bundle", "--unsigned", project_.writeConfig(project_.config(kHardened))});
  EXPECT_EQ(asked.status, 3);
  EXPECT_THAT(asked.err, HasSubstr("the launcher would refuse them [hardened]"));
}

}  // namespace
}  // namespace quillory::testing
