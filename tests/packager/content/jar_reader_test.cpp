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

// A jar with nothing but this manifest, stored.
std::string jarWithManifest(std::string manifest, const std::string& name) {
  std::string bytes = stubRuntimeJar();
  const std::size_t at = bytes.find("Manifest-Version");
  const std::size_t size = bytes.find("PK\1\2") - at;
  manifest.resize(size, '\0');  // the length of the one that was there
  bytes.replace(at, size, manifest);
  const std::string usual = "META-INF/MANIFEST.MF";
  for (std::size_t i = 0; (i = bytes.find(usual, i)) != std::string::npos; i += usual.size()) {
    bytes.replace(i, usual.size(), name);
  }
  return bytes;
}

// The rules of the program java, which takes more than the class library writes.
TEST(Jar, ReadsManifestsAsLenientlyAsJavaDoes) {
  const std::pair<std::string, std::string> cases[] = {{"Main-Class: a.B\r\nX: y\r\n\r\n", "a.B"},
                                                       {"Main-Class: a.B\rX: y\r", "a.B"},
                                                       {"MAIN-CLASS:a.B\n", "a.B"},
                                                       {"X: y\nmain-class:   a/B  \n", "a.B"},
                                                       {"Main-Class: a.\r\n B\r\n", "a.B"},
                                                       {"Main-Class: a.\n B\n C\n", "a.BC"},
                                                       {"Main-Class\n", ""},
                                                       {"X: y\n\nMain-Class: a.B\n", ""},
                                                       {"X: Main-Class: a.B\n", ""}};
  const TempDir dir;
  for (const auto& [manifest, mainClass] : cases) {
    writeFile(dir / "a.jar", jarWithManifest(manifest + '\n', "META-INF/MANIFEST.MF"));
    EXPECT_EQ(Jar(dir / "a.jar").mainClass(), mainClass) << manifest;
  }
  writeFile(dir / "a.jar", jarWithManifest("Main-Class: a.B\n\n", "meta-inf/Manifest.mf"));
  EXPECT_EQ(Jar(dir / "a.jar").mainClass(), "a.B");
}

// The jar tool adds the last line's end by itself, so zip makes it.
TEST(Jar, ReadsAManifestWhoseLastLineHasNoEnd) {
  const TempDir dir;
  writeFile(dir / "META-INF/MANIFEST.MF", "Manifest-Version: 1.0\nMain-Class: a.B");
  testing::ChildOptions options;
  options.directory = dir.str();
  ASSERT_EQ(runChild({"python3", "-m", "zipfile", "-c", "a.jar", "META-INF"}, options).exitStatus,
            0);
  EXPECT_EQ(Jar(dir / "a.jar").mainClass(), "a.B");
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

// A jar of a script with another library; `lines` write to the archive `jar`.
void makeJar(const std::string& path, const std::string& lines) {
  const testing::ChildResult result =
      runChild({"/usr/bin/python3", "-c",
                "import sys, zipfile\n"
                "jar = zipfile.ZipFile(sys.argv[1], 'w', zipfile.ZIP_DEFLATED)\n" +
                    lines + "\njar.close()\n",
                path});
  ASSERT_EQ(result.exitStatus, 0) << result.err;
}

// The value of Main-Class in a manifest.
std::string mainClassIn(const std::string& manifest) {
  TempDir dir;
  writeFile(dir / "manifest", manifest);
  makeJar(dir / "a.jar", "jar.write('" + dir / "manifest" + "', 'META-INF/MANIFEST.MF')");
  return Jar(dir / "a.jar").manifestValue("Main-Class");
}

TEST(Jar, ReadsTheMainSectionOfTheManifestOnly) {
  EXPECT_EQ(mainClassIn("Main-Class: a.B\n"), "a.B");
  EXPECT_EQ(mainClassIn("Manifest-Version: 1.0\r\nMain-Class: a.B\r\nX: y\r\n\r\n"), "a.B");
  EXPECT_EQ(mainClassIn("Main-Class: a.B"), "a.B") << "a last line without an end";
  EXPECT_EQ(mainClassIn("A: b\n\nName: part\nMain-Class: a.B\n"), "") << "a section of a part";
  EXPECT_EQ(mainClassIn("A: b\r\n\r\nName: part\r\nMain-Class: a.B\r\n"), "");
  EXPECT_EQ(mainClassIn("X-Main-Class: no\nMain-Class: a.B\n"), "a.B");
  EXPECT_EQ(mainClassIn("X-Main-Class: no\n"), "");
  EXPECT_EQ(mainClassIn("Main-Class: a.\n B\nX: y\n"), "a.B");
  EXPECT_EQ(mainClassIn("Main-Class: a.\r\n B\r\n C\r\n"), "a.BC");
  EXPECT_EQ(mainClassIn(""), "");
}

TEST(Jar, FindsEntriesBehindOthersWithFieldsOfTheirOwn) {
  TempDir dir;
  // An extra field and a comment in the directory; the field stands in the local header, too.
  makeJar(dir / "a.jar",
          "info = zipfile.ZipInfo('com/example/First.class')\n"
          "info.extra = b'\\xfe\\xca\\x04\\x00four'\n"
          "info.comment = b'a comment'\n"
          "jar.writestr(info, b'first')\n"
          "info = zipfile.ZipInfo('META-INF/MANIFEST.MF')\n"
          "info.extra = b'\\xfe\\xca\\x04\\x00four'\n"
          "jar.writestr(info, b'Main-Class: a.B\\n')\n"
          "jar.writestr('Last.class', b'last')");
  const Jar jar(dir / "a.jar");
  EXPECT_TRUE(jar.hasClass("com.example.First"));
  EXPECT_TRUE(jar.hasClass("Last"));
  EXPECT_EQ(jar.manifestValue("Main-Class"), "a.B");
}

TEST(Jar, IsFoundBeforeTheLongestComment) {
  TempDir dir;
  makeJar(dir / "a.jar", "jar.writestr('A.class', b'x')\njar.comment = b'c' * 65535");
  EXPECT_TRUE(Jar(dir / "a.jar").hasClass("A"));
}

TEST(Jar, ReadsManifestsOfUpToAMebibyte) {
  TempDir dir;
  const std::string write = "jar.writestr('META-INF/MANIFEST.MF', b'Main-Class: a.B\\n' + b'x' * ";
  makeJar(dir / "largest.jar", write + "((1 << 20) - 16))");
  EXPECT_EQ(Jar(dir / "largest.jar").manifestValue("Main-Class"), "a.B");
  makeJar(dir / "larger.jar", write + "((1 << 20) - 15))");
  EXPECT_THROW(Jar(dir / "larger.jar").manifestValue("Main-Class"), PackError);
}

TEST(Jar, IsDamagedWhenAnEntryIsNotAsLongAsItSays) {
  TempDir dir;
  makeJar(dir / "a.jar", "jar.writestr('META-INF/MANIFEST.MF', b'Main-Class: a.B\\n')");
  const std::string whole = readFile(dir / "a.jar");
  const std::size_t size = whole.find("PK\x01\x02") + 24;
  ASSERT_EQ(whole[size], 16);
  for (const char wrong : {'\x0f', '\x11'}) {
    std::string changed = whole;
    changed[size] = wrong;
    writeFile(dir / "a.jar", changed);
    EXPECT_THROW(Jar(dir / "a.jar").manifestValue("Main-Class"), PackError) << +wrong;
  }
}

TEST(Jar, NamesTheFileThatIsMissing) { EXPECT_THROW(Jar("/nonexistent.jar"), PackError); }

TEST(Jar, HandsOverItsClassesUntilItIsEnough) {
  std::size_t classes = 0;
  Jar(QUILLORY_HELLO_JAR).eachClass([&](std::string_view bytes) {
    EXPECT_TRUE(bytes.starts_with("\xCA\xFE\xBA\xBE"));
    ++classes;
    return true;
  });
  EXPECT_GT(classes, 1u);
  std::size_t asked = 0;
  Jar(QUILLORY_HELLO_JAR).eachClass([&](std::string_view) { return ++asked < 1; });
  EXPECT_EQ(asked, 1u);
}

}  // namespace
}  // namespace quillory::pack
