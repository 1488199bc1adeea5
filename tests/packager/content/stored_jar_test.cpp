#include "packager/content/stored_jar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/content/jar_reader.h"
#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/content/zip_bytes.h"

namespace quillory::pack {
namespace {

using testing::ChildResult;
using testing::entriesOf;
using ::testing::HasSubstr;
using testing::readFile;
using testing::runChild;
using testing::TempDir;
using testing::withZip;
using testing::writeFile;
namespace fs = std::filesystem;

class StoreJar : public ::testing::Test {
 protected:
  std::string run(const std::vector<std::string>& command) {
    const ChildResult result = runChild(command);
    EXPECT_EQ(result.exitStatus, 0) << command[0] << ": " << result.err << result.out;
    return result.out;
  }

  TempDir dir_;
  const std::string jar_ = dir_ / "a.jar";
  const std::string stored_ = dir_ / "out.jar";
};

TEST_F(StoreJar, KeepsOrderAndContentAndTakesTheCompressionOut) {
  withZip(jar_, "w",
          "  z.writestr('META-INF/MANIFEST.MF', 'Manifest-Version: 1.0\\n\\n')\n"
          "  z.writestr('b/', '')\n"
          "  z.writestr('b/large', bytes(range(256)) * 4000)\n"
          "  z.writestr('a/plain', 'as it is', S)\n"
          "  z.writestr('empty', '')\n"
          "  z.writestr(ZipInfo('gr\\u00fc\\u00df', (2024, 2, 29, 1, 2, 3)), 'x', D)\n");
  EXPECT_EQ(storeJar(jar_, stored_), "");
  EXPECT_EQ(entriesOf(stored_),
            "META-INF/MANIFEST.MF 0 23 8227c46e 1980-1-1\n"
            "b/ 0 0 00000000 1980-1-1\n"
            "b/large 0 1024000 a9f6c9ae 1980-1-1\n"
            "a/plain 0 8 964e24b3 1980-1-1\n"
            "empty 0 0 00000000 1980-1-1\n"
            "gr\u00fc\u00df 0 1 8cdc1683 1980-1-1\n");
  EXPECT_GT(fs::file_size(stored_), 1'024'000u);
  EXPECT_EQ(Jar(stored_).manifestValue("Manifest-Version"), "1.0");
}

TEST_F(StoreJar, KeepsCommentsAndAttributesAndDropsExtraFields) {
  withZip(jar_, "w",
          "  i = ZipInfo('run', (2024, 2, 29, 1, 2, 3))\n"
          "  i.external_attr, i.comment, i.extra = 0o100755 << 16, b'of it', b'UT\\1\\0x'\n"
          "  z.writestr(i, 'x', D)\n"
          "  z.comment = b'of all'\n");
  EXPECT_EQ(storeJar(jar_, stored_), "");
  EXPECT_EQ(withZip(stored_, "r",
                    "  i, = z.infolist()\n"
                    "  print(oct(i.external_attr >> 16), i.comment, i.extra, z.comment)\n"),
            "0o100755 b'of it' b'' b'of all'\n");
}

TEST_F(StoreJar, LeavesOutForAClassPathWhatMakesAModule) {
  withZip(jar_, "w",
          "  z.writestr('module-info.class', 'x' * 3000)\n"
          "  z.writestr('a/module-info.class', 'y')\n"
          "  z.writestr('META-INF/versions/9/module-info.class', 'z')\n"
          "  z.writestr('META-INF/versions/9/a/xmodule-info.class', 'w')\n");
  EXPECT_TRUE(Jar(jar_).isModule());
  EXPECT_EQ(storeJarForClassPath(jar_, stored_), "");
  EXPECT_EQ(entriesOf(stored_),
            "a/module-info.class 0 1 fbdb2615 1980-1-1\n"
            "META-INF/versions/9/a/xmodule-info.class 0 1 1c630b12 1980-1-1\n");
  EXPECT_FALSE(Jar(stored_).isModule());
}

TEST_F(StoreJar, GivesTheSameBytesForTheSameContent) {
  const std::string script =
      "  i = ZipInfo('a', (%d, 1, 1, 0, 0, 0))\n"
      "  z.writestr(i, 'x' * 5000, D, %d)\n";
  char text[200];
  std::snprintf(text, sizeof text, script.c_str(), 2001, 1);
  withZip(jar_, "w", text);
  EXPECT_EQ(storeJar(jar_, stored_), "");
  std::snprintf(text, sizeof text, script.c_str(), 2020, 9);
  withZip(dir_ / "b.jar", "w", text);
  EXPECT_EQ(storeJar(dir_ / "b.jar", dir_ / "outb.jar"), "");
  EXPECT_EQ(readFile(stored_), readFile(dir_ / "outb.jar"));
  // And what is stored already stays so.
  EXPECT_EQ(storeJar(stored_, dir_ / "again.jar"), "");
  EXPECT_EQ(readFile(stored_), readFile(dir_ / "again.jar"));
}

TEST_F(StoreJar, TakesEntriesWhoseLengthsFollowTheirContent) {
  run({"/usr/bin/python3", "-c",
       "import sys, zipfile\n"
       "class Pipe:\n"
       "  def __init__(self, f): self.f = f\n"
       "  def write(self, b): return self.f.write(b)\n"
       "  def flush(self): pass\n"
       "with open(sys.argv[1], 'wb') as f, zipfile.ZipFile(Pipe(f), 'w', 8) as z:\n"
       "  z.writestr('a', 'a' * 1000)\n"
       "  z.writestr('b', 'b')\n",
       jar_});
  ASSERT_EQ(readFile(jar_)[6] & 8, 8);
  EXPECT_EQ(storeJar(jar_, stored_), "");
  EXPECT_EQ(readFile(stored_)[6], 0);
  EXPECT_THAT(entriesOf(stored_), HasSubstr("a 0 1000 "));
}

TEST_F(StoreJar, LeavesOddJarsAsTheyAre) {
  writeFile(jar_, "no jar at all");
  EXPECT_EQ(storeJar(jar_, stored_), "it is no plain jar");
  EXPECT_FALSE(fs::exists(stored_));
}

TEST_F(StoreJar, RefusesADamagedEntry) {
  withZip(jar_, "w", "  z.writestr('a/b', bytes(i * i % 251 for i in range(1000)))\n");
  const std::string whole = readFile(jar_);
  const std::size_t content = 30 + 3;
  const std::size_t behind = whole.find("PK\x01\x02");
  std::size_t refused = 0;
  for (std::size_t at = content; at < behind; at += 7) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 0x10);
    writeFile(jar_, changed);
    try {
      storeJar(jar_, stored_);
    } catch (const PackError& e) {
      EXPECT_STREQ(e.what(), "the entry a/b is damaged");
      ++refused;
    }
    EXPECT_FALSE(fs::exists(stored_)) << at;
  }
  EXPECT_EQ(refused, (behind - content + 6) / 7);
}

TEST_F(StoreJar, RefusesAnEntryThatIsLongerOrShorterThanItSays) {
  withZip(jar_, "w", "  z.writestr('a', 'x' * 1000)\n");
  const std::string whole = readFile(jar_);
  const std::size_t size = whole.find("PK\x01\x02") + 24;
  for (const char low : {'\xE7', '\xE9'}) {
    std::string changed = whole;
    changed[size] = low;  // 999 and 1001
    writeFile(jar_, changed);
    EXPECT_THROW(storeJar(jar_, stored_), PackError);
    EXPECT_FALSE(fs::exists(stored_));
  }
}

// What a real JVM makes of a jar that is signed, has files for several releases of Java, and holds
// another jar.
TEST_F(StoreJar, KeepsASignedJarGoodForJava) {
  writeFile(dir_ / "Main.java",
            "public class Main { public static void main(String[] a) throws Exception {"
            "int n = 0; java.util.zip.CRC32 c = new java.util.zip.CRC32();"
            "java.io.InputStream in = Main.class.getResourceAsStream(\"/inner.jar\");"
            "for (int b; (b = in.read()) >= 0; n++) c.update(b);"
            "System.out.println((char) Main.class.getResourceAsStream(\"/which\").read()"
            "+ \" \" + n + \" \" + c.getValue()); } }");
  run({"javac", "-d", dir_.str(), dir_ / "Main.java"});
  const std::string inner = withZip(jar_, "w",
                                    "  z.writestr('META-INF/MANIFEST.MF',\n"
                                    "    'Manifest-Version: 1.0\\nMain-Class: Main\\n'\n"
                                    "    'Multi-Release: true\\n\\n')\n"
                                    "  z.writestr('which', '8')\n"
                                    "  z.writestr('META-INF/versions/9/which', '9')\n"
                                    "  z.write(sys.argv[1][:-5] + 'Main.class', 'Main.class')\n"
                                    "  b = io.BytesIO()\n"
                                    "  with zipfile.ZipFile(b, 'w', D) as inner:\n"
                                    "    inner.writestr('x', 'y' * 10000)\n"
                                    "  z.writestr('inner.jar', b.getvalue())\n"
                                    "  print(len(b.getvalue()), zlib.crc32(b.getvalue()))\n");
  const std::string store = dir_ / "store";
  run({"keytool", "-genkeypair", "-keystore", store, "-storepass", "secret", "-alias", "a",
       "-dname", "CN=a", "-keyalg", "EC"});
  run({"jarsigner", "-keystore", store, "-storepass", "secret", jar_, "a"});

  EXPECT_EQ(storeJar(jar_, stored_), "");
  EXPECT_THAT(entriesOf(stored_), ::testing::Not(HasSubstr(" 8 ")));
  EXPECT_EQ(run({"java", "-jar", stored_}), "9 " + inner);
  EXPECT_THAT(run({"jarsigner", "-verify", stored_}), HasSubstr("jar verified."));
}

}  // namespace
}  // namespace quillory::pack
