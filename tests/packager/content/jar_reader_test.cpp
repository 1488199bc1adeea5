#include "packager/content/jar_reader.h"

#include <gtest/gtest.h>

#include "packager/content/stub_jar.h"
#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::readFile;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

TEST(Jar, KnowsTheClassesAndTheManifestOfARealOne) {
  const Jar jar(QUILLORY_HELLO_JAR);
  EXPECT_TRUE(jar.hasClass("com.example.hello.Hello"));
  EXPECT_FALSE(jar.hasClass("com.example.hello.Missing"));
  EXPECT_TRUE(jar.contains("META-INF/MANIFEST.MF"));
  EXPECT_EQ(jar.manifestValue("Main-Class"), "com.example.hello.Hello");
  EXPECT_EQ(jar.manifestValue("Missing"), "");
}

TEST(Jar, JoinsManifestLinesThatAreContinued) {
  TempDir dir;
  writeFile(dir / "manifest",
            "Main-Class: com.example.a.very.long.package.name.that.does.not.fit."
            "into.one.line.Main\n");
  ASSERT_EQ(runChild({"jar", "--create", "--file", dir / "a.jar", "--manifest", dir / "manifest"})
                .exitStatus,
            0);
  EXPECT_EQ(Jar(dir / "a.jar").manifestValue("Main-Class"),
            "com.example.a.very.long.package.name.that.does.not.fit.into.one.line.Main");
}

TEST(Jar, ReadsEntriesThatAreStored) {
  TempDir dir;
  writeFile(dir / "a.jar", stubRuntimeJar());
  EXPECT_EQ(Jar(dir / "a.jar").manifestValue("Manifest-Version"), "1.0");
}

TEST(Jar, ReadsOneWithoutAManifest) {
  TempDir dir;
  writeFile(dir / "file", "x");
  ASSERT_EQ(runChild({"jar", "--create", "--no-manifest", "--file", dir / "a.jar", "-C", dir.str(),
                      "file"})
                .exitStatus,
            0);
  EXPECT_EQ(Jar(dir / "a.jar").manifestValue("Main-Class"), "");
}

TEST(Jar, IsFoundBehindOtherBytesAndBeforeAComment) {
  TempDir dir;
  std::string bytes = stubRuntimeJar();
  bytes[bytes.size() - 2] = 5;  // length of the comment
  writeFile(dir / "a.jar", bytes + "hello");
  EXPECT_TRUE(Jar(dir / "a.jar").contains("META-INF/MANIFEST.MF"));
}

TEST(Jar, CutOrChangedAnywhereIsAnErrorOrStillAJarAndNothingWorse) {
  TempDir dir;
  const std::string whole = stubRuntimeJar();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    writeFile(dir / "cut.jar", whole.substr(0, at));
    EXPECT_THROW(Jar(dir / "cut.jar"), PackError) << at;
    for (const char change : {'\xff', '\x01', '\x80'}) {
      std::string changed = whole;
      changed[at] = static_cast<char>(changed[at] ^ change);
      writeFile(dir / "changed.jar", changed);
      try {
        Jar(dir / "changed.jar").manifestValue("Main-Class");
      } catch (const PackError&) {
      }
    }
  }
}

TEST(Jar, NamesTheFileThatIsMissing) { EXPECT_THROW(Jar("/nonexistent.jar"), PackError); }

}  // namespace
}  // namespace quillory::pack
