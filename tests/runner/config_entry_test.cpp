#include "runner/config_entry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "runner/debug_lines.h"
#include "tests/harness/page_example.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"
#include "tests/runner/runner_fixture.h"

namespace quillory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::ScopedReplace;
using testing::StreamOf;
using testing::textsOf;
using namespace std::string_literals;

struct Entry {
  int result;
  std::vector<std::string> values;
  std::string printed;
};

Entry entryOf(std::string_view config, const char* name, int capacity = 10) {
  const StreamOf file(config);
  ArgumentList list(capacity);
  ::testing::internal::CaptureStdout();
  const int result = readEntry(file.get(), name, list);
  const std::string printed = ::testing::internal::GetCapturedStdout();
  return {result, textsOf(list), printed};
}

TEST(ReadEntry, TakesTheValuesOfItsNameInFileOrder) {
  const Entry entry = entryOf("app:/bin/echo\nother:x\napp:b\nmore:y\napp:a\n", "app");
  EXPECT_EQ(entry.result, 0);
  EXPECT_THAT(entry.values, ElementsAre("/bin/echo", "b", "a"));
  EXPECT_EQ(entry.printed, "");
}

TEST(ReadEntry, ReadsTheExampleOfThePage) {
  const std::string example = testing::pageExample("formats/runner-cfg.md");
  EXPECT_THAT(entryOf(example, "app").values, ElementsAre("/bin/echo", "hello", "[more]"));
  EXPECT_THAT(entryOf(example, "more").values, ElementsAre("a", "b"));
}

TEST(ReadEntry, IsMissingWithoutALineOfThatName) {
  EXPECT_EQ(entryOf("other:x\n", "app").result, -1);
  EXPECT_EQ(entryOf("", "app").result, -1);
  EXPECT_EQ(entryOf("\n\n", "app").result, -1);
}

TEST(ReadEntry, IsMissingInAFileThatIsAtItsEnd) {
  const StreamOf file("app:x\n");
  while (std::fgetc(file.get()) != EOF) continue;
  ArgumentList list(10);
  EXPECT_EQ(readEntry(file.get(), "app", list), -1);
}

TEST(ReadEntry, ComparesNamesByteByByte) {
  const Entry entry = entryOf("App:a\nap:b\napps:c\n app:d\napp :e\napp:f\n", "app");
  EXPECT_THAT(entry.values, ElementsAre("f"));
}

TEST(ReadEntry, SplitsAtTheFirstColonOnly) {
  EXPECT_THAT(entryOf("app:a:b::c\n", "app").values, ElementsAre("a:b::c"));
  EXPECT_THAT(entryOf("app::\n", "app").values, ElementsAre(":"));
}

TEST(ReadEntry, TakesALineWithoutAColonForANameWithAnEmptyValue) {
  EXPECT_THAT(entryOf("app\n", "app").values, ElementsAre(""));
  EXPECT_THAT(entryOf("app:\n", "app").values, ElementsAre(""));
}

TEST(ReadEntry, LeavesOutExeAtTheEndOfAName) {
  EXPECT_THAT(entryOf("app.exe:x\napp.EXE:y\napp.exe.exe:z\n", "app").values, ElementsAre("x"));
  EXPECT_THAT(entryOf("app.exe.exe:z\n", "app.exe").values, ElementsAre("z"));
}

TEST(ReadEntry, TakesEveryKindOfLineEnd) {
  EXPECT_THAT(entryOf("app:a\r\napp:b\rapp:c\napp:d\n\r", "app").values,
              ElementsAre("a", "b", "c", "d"));
}

TEST(ReadEntry, IgnoresALastLineWithoutALineEnd) {
  EXPECT_THAT(entryOf("app:a\napp:b", "app").values, ElementsAre("a"));
  EXPECT_EQ(entryOf("app:b", "app").result, -1);
}

TEST(ReadEntry, KeepsBlanksAndBytesBeyondAscii) {
  EXPECT_THAT(entryOf("app: a b \xc3\xb6\t\n", "app").values, ElementsAre(" a b \xc3\xb6\t"));
}

TEST(ReadEntry, EndsAPartAtAZeroByte) {
  EXPECT_THAT(entryOf("app\0x:a\0b\n"s, "app").values, ElementsAre("a"));
}

TEST(ReadEntry, TakesNamesAndValuesOf1023Bytes) {
  const std::string name(1023, 'n'), value(1023, 'v');
  const Entry entry = entryOf(name + ":" + value + "\n", name.c_str());
  EXPECT_THAT(entry.values, ElementsAre(value));
  EXPECT_EQ(entry.printed, "");
}

TEST(ReadEntry, CutsALongerNameAndTellsItOnce) {
  const std::string name(1023, 'n');
  const Entry entry = entryOf(name + "more:value\n", name.c_str());
  EXPECT_THAT(entry.values, ElementsAre("value"));
  EXPECT_EQ(entry.printed, "Config entry name too large\n");
}

TEST(ReadEntry, CutsALongerValueAndTellsItOnce) {
  const std::string value(1023, 'v');
  const Entry entry = entryOf("app:" + value + "more\napp:next\n", "app");
  EXPECT_THAT(entry.values, ElementsAre(value, "next"));
  EXPECT_EQ(entry.printed, "Config entry command too large\n");
}

TEST(ReadEntry, TellsOfLongPartsInEveryLineAlsoInThoseOfOtherNames) {
  const std::string longOne(2000, 'x');
  const Entry entry = entryOf(longOne + ":" + longOne + "\n" + longOne + "\napp:x\n", "app");
  EXPECT_THAT(entry.values, ElementsAre("x"));
  EXPECT_EQ(entry.printed,
            "Config entry name too large\nConfig entry command too large\n"
            "Config entry name too large\n");
}

TEST(ReadEntry, TellsWhatItReadsWhenDebugging) {
  const ScopedReplace debug(DEBUG, 1);
  EXPECT_EQ(entryOf("app.exe:x\n\nother\nlast:line", "app").printed, "app[x]\n[]\nother[]\n");
  const std::string full(1023, 'x');
  EXPECT_EQ(
      entryOf(full + "y\n", "app").printed,
      "Config entry name too large\nConfig entry name too large " + full + "\n" + full + "[]\n");
  EXPECT_EQ(entryOf("app:" + full + "y\n", "app").printed,
            "Config entry command too large\nConfig entry command too large app[" + full +
                "]\napp[" + full + "]\n");
}

TEST(ReadEntry, FillsItsListToTheLastPlace) {
  const Entry entry = entryOf("app:a\napp:b\napp:c\n", "app", 3);
  EXPECT_EQ(entry.result, kEntryFound);
  EXPECT_THAT(entry.values, ElementsAre("a", "b", "c"));
}

TEST(ReadEntry, RefusesAnEntryForWhichTheListHasNoRoom) {
  const Entry entry = entryOf("app:a\napp:b\napp:c\napp:d\n", "app", 2);
  EXPECT_EQ(entry.result, kListFull);
  EXPECT_THAT(entry.values, ElementsAre("a", "b"));
  EXPECT_EQ(entry.printed, "too many arguments in config entry app: at most 2\n");
}

TEST(ReadEntry, AppendsToWhatIsInTheList) {
  const StreamOf file("app:b\n");
  ArgumentList list(10);
  testing::addText(list, "a");
  EXPECT_EQ(readEntry(file.get(), "app", list), 0);
  EXPECT_THAT(textsOf(list), ElementsAre("a", "b"));
}

// Every prefix of a file is a file: no more values than whole lines, and no crash.
TEST(ReadEntry, ReadsAFileThatIsCutAnywhere) {
  const std::string whole = "app:/bin/echo\r\napp.exe:a:b\nother\n:\napp:[more]\n";
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    const std::size_t wholeLines = (length >= 14U) + (length >= 27U) + (length >= 46U);
    EXPECT_EQ(entryOf(whole.substr(0, length), "app").values.size(), wholeLines);
  }
}

}  // namespace
}  // namespace quillory
