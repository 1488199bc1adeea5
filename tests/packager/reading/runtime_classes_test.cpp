#include "packager/reading/runtime_classes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Optional;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

// A directory of two files: /java.base/java/lang/Object.class and /java.base/module-info.class.
const std::string kTexts = "\0java.base\0java/lang\0Object\0class\0module-info\0"s;
const std::string kAttributes =
    "\x08\x01\x10\x0b\x18\x15\x20\x1c\x28\x40\x39\x12\x34\0"  // module, folder, name, extension
    "\x08\x01\x18\x22\x20\x1c\0"s;

std::string little(std::uint32_t number) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(number >> 8 * i);
  return bytes;
}

std::string modulesFile(std::uint32_t version = 0x10000,
                        const std::string& attributes = kAttributes) {
  return little(0xCAFEDADA) + little(version) + little(0) + little(2) + little(2) +
         little(static_cast<std::uint32_t>(attributes.size())) +
         little(static_cast<std::uint32_t>(kTexts.size())) + std::string(16, '\xff') + attributes +
         kTexts + "what is in the files";
}

class ClassesOfRuntime : public ::testing::Test {
 protected:
  std::optional<std::set<std::string>> classesIn(const std::string& modules) {
    writeFile(dir_ / "lib/modules", modules);
    return classesOfRuntime(dir_.str());
  }

  TempDir dir_;
};

TEST_F(ClassesOfRuntime, AreThoseWithAFolder) {
  EXPECT_THAT(classesIn(modulesFile()), Optional(ElementsAre("java/lang/Object")));
}

TEST_F(ClassesOfRuntime, AreNotKnownWithoutAFileOfAKnownLayout) {
  EXPECT_EQ(classesOfRuntime(dir_.str()), std::nullopt);
  EXPECT_EQ(classesIn("classes"), std::nullopt);
  EXPECT_EQ(classesIn(modulesFile(0x20000)), std::nullopt);
  EXPECT_THAT(classesIn(modulesFile(0x10001)), Optional(ElementsAre("java/lang/Object")));
}

TEST_F(ClassesOfRuntime, AreNotKnownOfADirectoryThatIsCut) {
  const std::string whole = modulesFile();
  const std::size_t end = whole.size() - std::string("what is in the files").size();
  for (std::size_t length = 0; length < end; ++length) {
    EXPECT_EQ(classesIn(whole.substr(0, length)), std::nullopt) << length;
  }
}

// A number that points nowhere, an attribute that is not all there, a kind that nobody knows.
TEST_F(ClassesOfRuntime, DamagedAttributesAreNotFollowed) {
  EXPECT_THAT(classesIn(modulesFile(0x10000, "\x10\xff\x18\x15\x20\x1c\0"s)),
              Optional(ElementsAre()));
  EXPECT_EQ(classesIn(modulesFile(0x10000, "\x17\x01"s)), std::nullopt);
  EXPECT_EQ(classesIn(modulesFile(0x10000, "\x48\x01\0"s)), std::nullopt);
}

TEST_F(ClassesOfRuntime, AnyByteOfTheDirectoryMayBeAnother) {
  const std::string whole = modulesFile();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0xff);
    classesIn(damaged);  // Nothing is read that is not there.
  }
}

// jimage is the JDK's own reader.
TEST_F(ClassesOfRuntime, AreThoseThatTheJdkItselfFinds) {
  const std::string home =
      fs::canonical(runChild({"sh", "-c", "printf %s \"$(command -v jimage)\""}).out)
          .parent_path()
          .parent_path();
  const std::set<std::string> classes = classesOfRuntime(home).value();
  const std::string listed =
      runChild(
          {"sh", "-c", "jimage list --include 'glob:/java.base/**' '" + home + "/lib/modules'"})
          .out;
  std::size_t count = 0;
  std::istringstream lines(listed);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t name = line.find_first_not_of(' ');
    if (line.ends_with(".class") && line.find('/') != line.npos) {
      EXPECT_EQ(classes.count(line.substr(name, line.size() - name - 6)), 1u) << line;
      ++count;
    }
  }
  EXPECT_GT(count, 5000u);
  EXPECT_THAT(classes, IsSupersetOf({"java/lang/Object", "java/util/Map$Entry"}));
}

}  // namespace
}  // namespace quillory::pack
