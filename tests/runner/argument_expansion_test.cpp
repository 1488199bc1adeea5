#include "runner/argument_expansion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>

#include "runner/config_entry.h"
#include "runner/debug_lines.h"
#include "tests/harness/scoped_replace.h"
#include "tests/runner/runner_fixture.h"

namespace quillory {
namespace {

using testing::addText;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using testing::RunnerTest;
using testing::ScopedReplace;
using testing::textsOf;
using Texts = std::vector<std::string>;

class ReplaceImportStrings : public RunnerTest {
 protected:
  Texts expanded(const Texts& arguments) {
    ArgumentList list = commandList();
    for (const std::string& argument : arguments) addText(list, argument);
    printed_ = outputOf([&] { result_ = replaceImportStrings(list); });
    return textsOf(list);
  }

  int result_ = 1;
  std::string printed_;
};

TEST_F(ReplaceImportStrings, PutsAllValuesInThePlaceOfTheImport) {
  writeConfig("more:a\nmore:b\nmore:c\n");
  EXPECT_THAT(expanded({"first", "[more]", "last"}), ElementsAre("first", "a", "b", "c", "last"));
  EXPECT_EQ(result_, kEntryFound);
  EXPECT_EQ(printed_, "");
}

TEST_F(ReplaceImportStrings, WorksAtBothEndsAndForASingleValue) {
  writeConfig("one:1\ntwo:2\ntwo:3\n");
  EXPECT_THAT(expanded({"[one]"}), ElementsAre("1"));
  EXPECT_THAT(expanded({"[two]", "x", "[one]"}), ElementsAre("2", "3", "x", "1"));
  EXPECT_THAT(expanded({"[one]", "[one]"}), ElementsAre("1", "1"));
}

TEST_F(ReplaceImportStrings, LeavesOtherArgumentsAlone) {
  EXPECT_THAT(expanded({"a", "b[more]", "", "]"}), ElementsAre("a", "b[more]", "", "]"));
  EXPECT_EQ(printed_, "");
}

TEST_F(ReplaceImportStrings, ExpandsAnImportInAnImportUnlessItIsTheFirstValue) {
  writeConfig("outer:[inner]\nouter:[inner]\nouter:x\ninner:1\ninner:2\n");
  EXPECT_THAT(expanded({"[outer]", "end"}), ElementsAre("[inner]", "1", "2", "x", "end"));
}

TEST_F(ReplaceImportStrings, TakesTheNameUpToTheBracketAndDropsTheRest) {
  writeConfig("more:a\nmore]x:b\n");
  EXPECT_THAT(expanded({"[more]/tail"}), ElementsAre("a"));
  EXPECT_THAT(expanded({"[more]x]"}), ElementsAre("a"));
  EXPECT_THAT(expanded({"[more"}), ElementsAre("a"));
}

TEST_F(ReplaceImportStrings, LeavesAnUnknownImportAsItIs) {
  writeConfig("more:a\n");
  EXPECT_THAT(expanded({"[none]", "[more]"}), ElementsAre("[none]", "a"));
  EXPECT_EQ(printed_, "could not find import entry\n");
  EXPECT_EQ(result_, kEntryFound);
}

TEST_F(ReplaceImportStrings, LeavesEveryImportAsItIsWithoutTheFile) {
  EXPECT_THAT(expanded({"[a]", "x", "[b]"}), ElementsAre("[a]", "x", "[b]"));
  EXPECT_EQ(printed_,
            "could not find config file for import: runner.cfg\n"
            "could not find config file for import: runner.cfg\n");
  EXPECT_EQ(result_, kEntryFound);
}

TEST_F(ReplaceImportStrings, TellsEveryMoveWhenDebugging) {
  const ScopedReplace debug(DEBUG, 1);
  writeConfig("more:a\nmore:b\n");
  EXPECT_THAT(expanded({"x", "[more]", "y", "z"}), ElementsAre("x", "a", "b", "y", "z"));
  EXPECT_EQ(printed_,
            "Found import request for more\n"
            "more[a]\n"
            "more[b]\n"
            "found import entry OK (2 args)\n"
            "IMPARG:a\n"
            "IMPARG:b\n"
            "< Moving y to (null)\n"
            "< Moving z to y\n"
            "> Moving z to (null)\n"
            "> Moving y to z\n");
}

std::string linesOf(const std::string& name, int count) {
  std::string lines;
  for (int i = 1; i <= count; ++i) lines += name + ":" + std::to_string(i) + "\n";
  return lines;
}

TEST_F(ReplaceImportStrings, TakesAnImportOf100Values) {
  writeConfig(linesOf("more", 100));
  const Texts arguments = expanded({"x", "[more]", "y"});
  EXPECT_EQ(arguments.size(), 102U);
  EXPECT_EQ(arguments[100], "100");
  EXPECT_EQ(arguments[101], "y");
}

TEST_F(ReplaceImportStrings, RefusesAnImportOf101Values) {
  writeConfig(linesOf("more", 101));
  EXPECT_THAT(expanded({"x", "[more]"}), ElementsAre("x", "[more]"));
  EXPECT_EQ(result_, kListFull);
  EXPECT_EQ(printed_, "too many arguments in config entry more: at most 100\n");
}

TEST_F(ReplaceImportStrings, FillsTheListToItsLastPlaceAndNoFurther) {
  writeConfig(linesOf("more", 100));
  const Texts five(5, "[more]");
  Texts arguments = five;
  arguments.back() = "x";
  while (arguments.size() < 103) arguments.push_back("y");  // 4 * 100 + 99
  EXPECT_EQ(expanded(arguments).size(), 499U);
  EXPECT_EQ(result_, kEntryFound);

  arguments.push_back("one too many");
  expanded(arguments);
  EXPECT_EQ(result_, kListFull);
  EXPECT_EQ(printed_, "too many arguments with import entry more: at most 499\n");
}

TEST_F(ReplaceImportStrings, EndsImportsInACircleAtTheLimit) {
  writeConfig("loop:x\nloop:[loop]\n");
  expanded({"[loop]"});
  EXPECT_EQ(result_, kListFull);
  EXPECT_EQ(printed_, "too many arguments with import entry loop: at most 499\n");
}

TEST_F(ReplaceImportStrings, EndsAnImportOfItselfAlone) {
  writeConfig("loop:[loop]\n");
  EXPECT_THAT(expanded({"[loop]"}), ElementsAre("[loop]"));
  EXPECT_EQ(result_, kEntryFound);
}

class ReplaceEnvStrings : public RunnerTest {
 protected:
  ReplaceEnvStrings() {
    setenv("SAME", "123456", 1);  // as long as %SAME%
    setenv("SHORT", "1", 1);
    setenv("LONG", "a longer value", 1);
    setenv("EMPTY", "", 1);
    unsetenv("NOPE");
  }
  ~ReplaceEnvStrings() override {
    for (const char* name : {"SAME", "SHORT", "LONG", "EMPTY", "LIKE", "HUGE"}) unsetenv(name);
  }

  std::string replaced(const std::string& argument) {
    ArgumentList list(2);
    addText(list, argument);
    addText(list, "untouched");
    printed_ = outputOf([&] { replaceEnvStrings(list); });
    EXPECT_EQ(textsOf(list)[1], "untouched");
    return textsOf(list)[0];
  }

  std::string printed_;
};

TEST_F(ReplaceEnvStrings, ReplacesAVariableAnywhere) {
  EXPECT_EQ(replaced("%SAME%"), "123456");
  EXPECT_EQ(replaced("%SHORT%/x"), "1/x");
  EXPECT_EQ(replaced("x/%LONG%"), "x/a longer value");
  EXPECT_EQ(replaced("x%EMPTY%y"), "xy");
}

TEST_F(ReplaceEnvStrings, LeavesAnUnknownVariableWithItsPercentSigns) {
  EXPECT_EQ(replaced("%NOPE%"), "%NOPE%");
  EXPECT_EQ(replaced("%NOPE%%SAME%"), "%NOPE%123456");
  EXPECT_EQ(replaced("100%%"), "100%%");
}

TEST_F(ReplaceEnvStrings, LeavesASinglePercentSign) {
  EXPECT_EQ(replaced("%"), "%");
  EXPECT_EQ(replaced("100%"), "100%");
  EXPECT_EQ(replaced("%SAME"), "%SAME");
  EXPECT_EQ(replaced("%SAME%%"), "123456%");
}

TEST_F(ReplaceEnvStrings, ReplacesSeveralThatAreAsLongAsTheirNames) {
  EXPECT_EQ(replaced("%SAME%%SAME%-%SAME%"), "123456123456-123456");
}

// The search goes on at position 7, where %SHORT% ended, and not behind its value at 1.
TEST_F(ReplaceEnvStrings, MissesAVariableThatMovesBackBehindAShorterValue) {
  EXPECT_EQ(replaced("%SHORT%%LONG%"), "1%LONG%");
  EXPECT_EQ(replaced("%SHORT%%LONG%%SAME%"), "1%LONG%123456");
}

TEST_F(ReplaceEnvStrings, SeesAVariableFarEnoughBehindAShorterValue) {
  EXPECT_EQ(replaced("%SHORT%......%SAME%"), "1......123456");
}

// %LIKE% is 6 long, so that the search goes on inside its value.
TEST_F(ReplaceEnvStrings, SearchesTheRestOfALongerValue) {
  setenv("LIKE", "%SAME%%SAME%", 1);
  EXPECT_EQ(replaced("%LIKE%"), "%SAME%123456");
}

TEST_F(ReplaceEnvStrings, EndsAlthoughAValueHoldsItsOwnName) {
  setenv("LIKE", "......%LIKE%", 1);
  const std::string result = replaced("%LIKE%");
  EXPECT_EQ(result.size(), 1023U);
  EXPECT_THAT(result, ::testing::StartsWith("............"));
}

TEST_F(ReplaceEnvStrings, LosesWhatNoLongerFitsInTheSlot) {
  setenv("HUGE", std::string(1000, 'h').c_str(), 1);
  const std::string tail(100, 't');
  EXPECT_EQ(replaced("%HUGE%" + tail), std::string(1000, 'h') + std::string(23, 't'));
  setenv("HUGE", std::string(5000, 'h').c_str(), 1);
  EXPECT_EQ(replaced("x%HUGE%" + tail), "x" + std::string(1022, 'h'));
  const std::string full(1017, 'f');
  EXPECT_EQ(replaced(full + "%HUGE%"), full + "hhhhhh");
}

TEST_F(ReplaceEnvStrings, LeavesNothingBehindTheTextInTheSlot) {
  ArgumentList list(1);
  addText(list, "%SHORT%.............%NOPE");
  replaceEnvStrings(list);
  const std::string text = "1.............%NOPE";
  const std::string slot(list[0], argsiz);
  EXPECT_EQ(slot, text + std::string(argsiz - text.size(), '\0'));
}

TEST_F(ReplaceEnvStrings, TellsEachVariableWhenDebugging) {
  const ScopedReplace debug(DEBUG, 1);
  replaced("%SAME%%NOPE%%%");
  EXPECT_EQ(printed_, "ENV:SAME->123456\nENV:NOPE->(null)\nENV:->(null)\n");
}

}  // namespace
}  // namespace quillory
