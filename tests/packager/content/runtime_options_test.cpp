#include "packager/content/runtime_options.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::runChild;
using testing::TempDir;
using testing::writeFile;
using Texts = std::vector<std::string>;

class ManifestOptions : public ::testing::Test {
 protected:
  Texts of(const std::string& manifest, const Texts& modules) const {
    writeFile(dir_ / "manifest", manifest);
    EXPECT_EQ(
        runChild({"jar", "--create", "--file", dir_ / "a.jar", "--manifest", dir_ / "manifest"})
            .exitStatus,
        0);
    return optionsAbout(manifestOptions(Jar(dir_ / "a.jar")), modules);
  }

  TempDir dir_;
};

TEST_F(ManifestOptions, AreThoseThatJavaHonoursInTheJarThatItIsGiven) {
  EXPECT_EQ(
      of("Add-Exports: java.base/sun.a java.desktop/sun.b\n"
         "Add-Opens: java.base/java.lang\n"
         "Enable-Native-Access: ALL-UNNAMED\n",
         {"java.base", "java.desktop"}),
      (Texts{"--add-exports=java.base/sun.a=ALL-UNNAMED",
             "--add-exports=java.desktop/sun.b=ALL-UNNAMED",
             "--add-opens=java.base/java.lang=ALL-UNNAMED", "--enable-native-access=ALL-UNNAMED"}));
}

TEST_F(ManifestOptions, AreNotThoseOfModulesThatARuntimeDoesNotHave) {
  EXPECT_EQ(of("Add-Exports: java.base/sun.a java.desktop/sun.b\n", {"java.base"}),
            (Texts{"--add-exports=java.base/sun.a=ALL-UNNAMED"}));
}

TEST_F(ManifestOptions, AreNoneWhereNoneAreAskedForOrNothingIsNamed) {
  EXPECT_EQ(of("Created-By: me\n", {"java.base"}), Texts{});
  EXPECT_EQ(of("Add-Opens: java.base /p java.base/\nEnable-Native-Access: no\n", {"java.base", ""}),
            Texts{});
}

TEST(OptionText, QuotesWhatHoldsBlanksOrQuotes) {
  EXPECT_EQ(optionText({"-Xss2m", "-Da=b c", "-Db=it's", "-Dc=\"d\""}),
            "-Xss2m '-Da=b c' \"-Db=it's\" '-Dc=\"d\"'");
  EXPECT_EQ(optionText({}), "");
  EXPECT_THROW(optionText({"-Da='\""}), PackError);
  EXPECT_THROW(optionText({"-Da=b\nc"}), PackError);
}

TEST(ModulesListed, HaveNoVersion) {
  EXPECT_EQ(modulesListed("java.base@17.0.9\njava.xml@17.0.9\nmine\n"),
            (Texts{"java.base", "java.xml", "mine"}));
}

}  // namespace
}  // namespace quillory::pack
