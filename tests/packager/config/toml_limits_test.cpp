#include "packager/config/toml_limits.h"

#include <gtest/gtest.h>

#include "packager/config/toml_file.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::TempDir;
using testing::writeFile;

// What is too much, with its line; "" when nothing is.
std::string excessOf(const std::string& text) {
  const std::optional<Finding> excess = excessOfToml("quillory.toml", text);
  return excess ? asText(excess->place) + ": " + excess->what : "";
}

std::string repeated(int times, const std::string& text) {
  std::string all;
  for (int i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

constexpr char kTooDeep[] =
    "the file goes more than 32 levels deep, in lists, tables or the parts of a name";

TEST(ExcessOfToml, IsMoreThanAMegabyte) {
  EXPECT_EQ(excessOf(std::string(1000000, '\n')), "");
  EXPECT_EQ(excessOf(std::string(1000001, '\n')),
            "quillory.toml: the file is larger than 1000000 bytes");
}

TEST(ExcessOfToml, IsMoreThan32Levels) {
  for (const char* bracket : {"[", "{", "[{a="}) {
    const int brackets = bracket[1] == '\0' ? 1 : 2;
    EXPECT_EQ(excessOf("\na = " + repeated(32 / brackets, bracket)), "") << bracket;
    EXPECT_EQ(excessOf("\na = " + repeated(32 / brackets, bracket) + '['),
              std::string("quillory.toml:2: ") + kTooDeep);
  }
  EXPECT_EQ(excessOf("a = " + repeated(100, "[[1], [2]],\n")), "") << "one after the other";
  EXPECT_EQ(excessOf(repeated(40, "]") + repeated(33, "[")),
            std::string("quillory.toml:1: ") + kTooDeep)
      << "what is closed too often is no credit";
}

TEST(ExcessOfToml, IsANameOfMoreThan32Parts) {
  EXPECT_EQ(excessOf(repeated(31, "a.") + "a = 1\n"), "");
  EXPECT_EQ(excessOf(repeated(32, "a.") + "a = 1\n"), std::string("quillory.toml:1: ") + kTooDeep);
  EXPECT_EQ(excessOf('[' + repeated(32, "a .\t") + "a]\n"),
            std::string("quillory.toml:1: ") + kTooDeep);
  EXPECT_EQ(excessOf(repeated(32, "\"a\".") + "a = 1\n"),
            std::string("quillory.toml:1: ") + kTooDeep);
  EXPECT_EQ(excessOf("a.b.c = 1.5\n" + repeated(100, "d.e = [1.5, 2.5]\n")), "");
}

TEST(ExcessOfToml, IsMoreThan5000Values) {
  const std::string tooMany = ": the file has more than 5000 values";
  EXPECT_EQ(excessOf(repeated(5000, "a=1\n")), "");
  EXPECT_EQ(excessOf(repeated(5001, "a=1\n")), "quillory.toml:5001" + tooMany);
  EXPECT_EQ(excessOf(repeated(5001, "[a]\n")), "quillory.toml:5001" + tooMany);
  EXPECT_EQ(excessOf("a=[" + repeated(4998, "1,") + "]"), "");
  EXPECT_EQ(excessOf("a=[" + repeated(4999, "1,") + "]"), "quillory.toml:1" + tooMany);
}

TEST(ExcessOfToml, DoesNotCountWhatStandsInTextsAndComments) {
  const std::string many = repeated(40, "[") + repeated(40, ".a");
  for (const std::string& text :
       {"# " + many + '\n', "a = \"" + many + "\"\n", "a = '" + many + "'\n",
        "a = \"\"\"\n" + many + "\n\"\"\"\n", "a = '''\n" + many + "\n'''\n",
        "a = \"\\\"" + many + "\"\n", "a = \"\"\"\\\"\"\"" + many + "\"\"\"\n",
        "a = \"\"\"x\"\"\"\"\"  # " + many}) {
    EXPECT_EQ(excessOf(text), "") << text;
  }
}

TEST(ExcessOfToml, OverlooksNothingBehindATextThatIsOver) {
  const std::string many = repeated(40, "[");
  for (const std::string& text :
       {"a = \"\" " + many, "a = '\\' " + many, "a = \"open\n" + many, "a = 'open\n" + many,
        "a = \"\"\"\"\"\" " + many, "a = \"\"\"x\"\"\"\" " + many, "a = '''x''''' " + many,
        "a = \"\\\\\" " + many, "# comment\n" + many, "a = ''''''' " + many}) {
    EXPECT_NE(excessOf(text), "") << text;
  }
}

TEST(ExcessOfToml, IsRefusedBeforeTheLibrarySeesIt) {
  TempDir dir;
  // Each of these ended the process, or took minutes.
  for (const std::string& text :
       {"a = " + repeated(20000, "["), "a = " + repeated(20000, "{a="),
        repeated(20000, "a.") + "a = 1", repeated(100000, "a=1\n"), std::string(1000001, '#')}) {
    writeFile(dir / "quillory.toml", text);
    try {
      readTomlFile(dir / "quillory.toml");
      ADD_FAILURE() << text.substr(0, 20);
    } catch (const RejectedInput& e) {
      EXPECT_EQ(e.findings().at(0).rule, "toml-limit");
    }
  }
}

TEST(ReadTomlFile, StopsReadingAFileWithoutAnEnd) {
  try {
    readTomlFile("/dev/zero");
    FAIL();
  } catch (const RejectedInput& e) {
    EXPECT_EQ(asText(e.findings().at(0)),
              "/dev/zero: error: the file is larger than 1000000 bytes [toml-limit]\n"
              "  -> a configuration of an application is much smaller: look at what wrote it");
  }
}

}  // namespace
}  // namespace quillory::pack
