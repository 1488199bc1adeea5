#include "packager/content/jar_entries.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/content/zip_bytes.h"

namespace quillory::pack {
namespace {

using testing::readFile;
using testing::TempDir;
using testing::withZip;
using testing::writeFile;

class JarEntries : public ::testing::Test {
 protected:
  JarEntries() {
    withZip(jar_, "w",
            "  z.writestr('META-INF/MANIFEST.MF', 'Manifest-Version: 1.0\\n\\n')\n"
            "  z.writestr('a/', '')\n"
            "  z.writestr('a/b.txt', 'b' * 1000)\n"
            "  z.comment = b'a comment'\n");
    bytes_ = readFile(jar_);
  }

  // Why the bytes are no plain jar; "" when they are one.
  std::string oddityOf(const std::string& bytes) {
    writeFile(dir_ / "odd.jar", bytes);
    try {
      const JarFile jar(dir_ / "odd.jar");
      JarDirectory directory = readJarDirectory(jar);
      inFileOrder(jar, directory);
      return "";
    } catch (const OddJar& odd) {
      return odd.why;
    }
  }
  std::string changed(std::size_t at, const std::string& to) const {
    std::string bytes = bytes_;
    return bytes.replace(at, to.size(), to);
  }
  std::size_t end() const { return bytes_.rfind("PK\x05\x06"); }
  std::size_t directory() const { return bytes_.find("PK\x01\x02"); }

  TempDir dir_;
  const std::string jar_ = dir_ / "a.jar";
  std::string bytes_;
};

TEST_F(JarEntries, AreThoseOfTheDirectoryWithTheirPlaces) {
  const JarFile jar(jar_);
  JarDirectory directory = readJarDirectory(jar);
  EXPECT_EQ(directory.comment, "a comment");
  ASSERT_EQ(directory.entries.size(), 3u);
  const JarEntry& text = directory.entries[2];
  EXPECT_EQ(text.name, "a/b.txt");
  EXPECT_EQ(text.method(), kDeflatedMethod);
  EXPECT_EQ(text.size(), 1000u);
  EXPECT_FALSE(text.isFolder());
  EXPECT_TRUE(directory.entries[1].isFolder());
  const auto ordered = inFileOrder(jar, directory);
  ASSERT_EQ(ordered.size(), 3u);
  EXPECT_EQ(ordered[0]->contentAt, 30 + std::string("META-INF/MANIFEST.MF").size());
  EXPECT_EQ(text.contentAt + text.packedSize(), directory.offset);
}

TEST_F(JarEntries, FollowOneAnotherAsInTheFileWhateverTheDirectory) {
  // The directory's first entry is put behind the others.
  const std::size_t first = directory();
  const std::size_t second = bytes_.find("PK\x01\x02", first + 1);
  std::string turned = bytes_;
  turned.erase(first, second - first);
  turned.insert(turned.rfind("PK\x05\x06"), bytes_.substr(first, second - first));
  writeFile(dir_ / "turned.jar", turned);
  const JarFile jar(dir_ / "turned.jar");
  JarDirectory directory = readJarDirectory(jar);
  EXPECT_EQ(directory.entries[2].name, "META-INF/MANIFEST.MF");
  EXPECT_EQ(inFileOrder(jar, directory)[0], &directory.entries[2]);
}

TEST_F(JarEntries, AreNotReadFromWhatIsCutAnywhere) {
  for (std::size_t length = 0; length < bytes_.size(); ++length)
    EXPECT_EQ(oddityOf(bytes_.substr(0, length)), "it is no plain jar") << length;
  EXPECT_EQ(oddityOf(bytes_), "");
}

TEST_F(JarEntries, AreNotReadFromWhatIsNoPlainJar) {
  using namespace std::string_literals;
  const std::size_t local = 0;
  static const struct {
    const char* what;
    std::string bytes;
  } kCases[] = {
      {"text", "no jar at all"},
      {"a program in front", "#!/bin/sh\n" + bytes_},
      {"something behind", bytes_ + "x"},
      {"encrypted", changed(directory() + 8, "\x01")},
      {"another method", changed(directory() + 10, "\x0c")},
      {"stored with two lengths", changed(directory() + 10, "\x00"s)},
      {"a wrong local mark", changed(local, "PK\x03\x05")},
      {"another name in front of the content", changed(local + 30, "META-INE")},
      {"an offset into another entry", changed(directory() + 42, "\x05")},
      {"an offset beyond the end", changed(directory() + 42, "\xFF\xFF\xFF\x7F")},
      {"a longer content than there is", changed(directory() + 20, "\xFF\xFF\xFF\x7F")},
      {"a longer name than there is", changed(directory() + 28, "\xFF\x7F")},
      {"more entries than there are", changed(end() + 8, "\x04\x00\x04\x00"s)},
      {"fewer entries than there are", changed(end() + 8, "\x02\x00\x02\x00"s)},
      {"several disks", changed(end() + 4, "\x01")},
      {"a directory elsewhere", changed(end() + 16, "\x01")},
      {"a longer directory", changed(end() + 12, "\xFF\xFF\xFF\x7F")},
  };
  for (const auto& [what, bytes] : kCases) EXPECT_EQ(oddityOf(bytes), "it is no plain jar") << what;
}

TEST_F(JarEntries, AreNotReadBeyondFourGigabytes) {
  const std::string elsewhere(4, '\xFF');
  const std::string why = "it has too many or too long entries";
  EXPECT_EQ(oddityOf(changed(end() + 8, elsewhere)), why);
  EXPECT_EQ(oddityOf(changed(end() + 16, elsewhere)), why);
  EXPECT_EQ(oddityOf(changed(directory() + 24, elsewhere)), why);
  EXPECT_EQ(oddityOf(changed(directory() + 42, elsewhere)), why);
}

TEST_F(JarEntries, OfAFileThatIsNotThereAreAnError) {
  EXPECT_THROW(JarFile(dir_ / "missing.jar"), PackError);
}

}  // namespace
}  // namespace quillory::pack
