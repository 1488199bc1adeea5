#include "support/command_output.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <optional>
#include <string>

#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using quillory::testing::TempDir;

// No more files can be opened while it lives.
class NoMoreFiles {
 public:
  NoMoreFiles() {
    getrlimit(RLIMIT_NOFILE, &saved_);
    rlimit none = saved_;
    none.rlim_cur = 0;
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreFiles() { setrlimit(RLIMIT_NOFILE, &saved_); }

 private:
  rlimit saved_ = {};
};

TEST(OutputOfCommand, StripsLineEndsAndSpacesAtTheEndOnly) {
  EXPECT_EQ(outputOfCommand("printf '1.8\\n\\r '"), "1.8");
  EXPECT_EQ(outputOfCommand("printf ' a \\n b\\n\\n'"), " a \n b");
  EXPECT_EQ(outputOfCommand("printf 'kept\\t\\n'"), "kept\t");
  EXPECT_EQ(outputOfCommand("printf ' \\n\\r '"), "");
}

TEST(OutputOfCommand, IsEmptyWithoutOutput) {
  EXPECT_EQ(outputOfCommand("true"), "");
  EXPECT_EQ(outputOfCommand("/nonexistent/tool 2>/dev/null"), "");
}

TEST(OutputOfCommand, TakesStandardOutputOnly) {
  EXPECT_EQ(outputOfCommand("echo out; echo err 1>&2"), "out");
}

TEST(OutputOfCommand, ReturnsMoreThanTenThousandBytesWhole) {
  EXPECT_EQ(outputOfCommand("head -c 100000 /dev/zero | tr '\\0' x"), std::string(100000, 'x'));
}

TEST(OutputOfCommand, IsNothingWithoutAPipe) {
  NoMoreFiles limit;
  EXPECT_EQ(outputOfCommand("echo never"), std::nullopt);
}

TEST(OutputOfProgram, HandsOverTheArgumentsUnexpanded) {
  const std::optional<std::string> output =
      outputOfProgram({"/usr/bin/printf", "%s|", "$HOME", "`id`", "a\"b", "c d"});
  EXPECT_EQ(output, "$HOME|`id`|a\"b|c d|");
}

TEST(OutputOfProgram, StripsLikeACommand) {
  const std::optional<std::string> output = outputOfProgram({"/usr/bin/printf", "1.8\\n\\r "});
  EXPECT_EQ(output, "1.8");
}

TEST(OutputOfProgram, ReturnsLongOutputWhole) {
  const std::optional<std::string> output =
      outputOfProgram({"/bin/sh", "-c", "seq 1 30000; echo end"});
  const std::string text = output.value_or("");
  EXPECT_GT(text.size(), 65536U) << "more than a pipe holds";
  EXPECT_TRUE(text.ends_with("30000\nend"));
}

TEST(OutputOfProgram, IsNothingForAProgramThatDoesNotExist) {
  EXPECT_EQ(outputOfProgram({"/nonexistent/$tool"}), std::nullopt);
  EXPECT_EQ(outputOfProgram({}), std::nullopt);
}

TEST(OutputOfProgram, IsNothingWithoutAPipe) {
  NoMoreFiles limit;
  EXPECT_EQ(outputOfProgram({"/bin/true"}), std::nullopt);
}

}  // namespace
}  // namespace quillory
