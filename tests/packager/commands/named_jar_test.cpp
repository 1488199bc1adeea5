#include "packager/commands/named_jar.h"

#include <gtest/gtest.h>

#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::TempDir;
using testing::writeFile;

const Place kPlace{"quillory.toml", 7};

TEST(NamedJar, IsTheJarThatIsThere) {
  Findings findings;
  const std::optional<Jar> jar = namedJar(QUILLORY_HELLO_JAR, kPlace, findings);
  ASSERT_TRUE(jar.has_value());
  EXPECT_TRUE(findings.empty());
}

TEST(NamedJar, IsNoneForAFileThatIsNoJarAndSaysWhereItIsNamed) {
  const TempDir dir;
  writeFile(dir / "no.jar", "this is no archive");
  Findings findings;
  EXPECT_FALSE(namedJar(dir / "no.jar", kPlace, findings).has_value());
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].severity, Severity::kError);
  EXPECT_EQ(findings[0].rule, "jar");
  EXPECT_EQ(findings[0].place.file, "quillory.toml");
  EXPECT_EQ(findings[0].place.line, 7U);
  EXPECT_TRUE(findings[0].what.starts_with(dir / "no.jar: ")) << findings[0].what;
  EXPECT_EQ(findings[0].advice, "build it again, or correct the name");
}

TEST(NamedJar, IsNoneForAFileThatIsNotThere) {
  const TempDir dir;
  Findings findings;
  EXPECT_FALSE(namedJar(dir / "gone.jar", kPlace, findings).has_value());
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, "jar");
}

}  // namespace
}  // namespace quillory::pack
