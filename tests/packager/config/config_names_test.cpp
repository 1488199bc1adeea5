#include "packager/config/config_names.h"

#include <gtest/gtest.h>

#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::findingOf;
using testing::rulesOf;

using Rules = std::vector<std::string>;

class LintNames : public ::testing::Test {
 protected:
  LintNames() {
    config_.file = "quillory.toml";
    config_.application.name = "Hello";
    config_.application.version = 3;
    config_.application.executable = "Hello";
    config_.application.identifier = "com.example.hello";
    config_.runtime.name = "JRE";
    config_.places["application.name"] = {"quillory.toml", 2};
    config_.places["runtime.name"] = {"quillory.toml", 9};
  }

  Findings lint() const { return lintNames(config_); }

  Config config_;
};

TEST_F(LintNames, TakesOrdinaryNames) { EXPECT_EQ(rulesOf(lint()), Rules{}); }

TEST_F(LintNames, NamesTheKeyAndItsLine) {
  config_.application.name = "My-App";
  config_.runtime.name = "My:JRE";
  const Findings findings = lint();
  ASSERT_EQ(rulesOf(findings), (Rules{"name-dash", "name-colon"}));
  EXPECT_EQ(findings[0].what.find("application.name holds a \"-\""), 0u);
  EXPECT_EQ(findings[0].place.line, 2u);
  EXPECT_EQ(findings[1].what.find("runtime.name holds a \":\""), 0u);
  EXPECT_EQ(findings[1].place.line, 9u);
}

TEST_F(LintNames, KeepsTheNamesOfTheUpdaterAndOfTools) {
  for (const char* name : {"Quillory", "QUILLORY", "java", "Java", "keytool"}) {
    config_.application.name = name;
    EXPECT_EQ(rulesOf(lint()), Rules{"name-taken"}) << name;
  }
  config_.application.name = "javac";
  EXPECT_EQ(rulesOf(lint()), Rules{});
  config_.runtime.name = "java";
  EXPECT_EQ(rulesOf(lint()), Rules{}) << "a runtime may have it";
}

TEST_F(LintNames, KeepsTheRuntimeApartFromTheOthers) {
  config_.runtime.name = "quillory";
  EXPECT_EQ(findingOf(lint(), "name-taken").what,
            "runtime.name is the name of the updater, whose folders would be taken for the "
            "runtime's");
  EXPECT_EQ(findingOf(lint(), "name-taken").severity, Severity::kError);
  config_.runtime.name = "HELLO";
  EXPECT_EQ(findingOf(lint(), "name-taken").what,
            "runtime.name is the name of the application, whose folders would be taken for the "
            "runtime's");
}

TEST_F(LintNames, CountsTheVersionInTheNameOfAFolder) {
  const auto longest = [this](std::string& name) {
    for (std::size_t length = 255; length > 0; --length) {
      name = std::string(length, 'n');
      if (lint().empty()) {
        return length;
      }
    }
    return std::size_t{0};
  };
  const std::size_t withOneDigit = longest(config_.application.name);
  config_.application.version = 1234567;
  EXPECT_EQ(longest(config_.application.name), withOneDigit - 6);
  config_.application.name = "Hello";
  const std::size_t ofUnknownVersion = longest(config_.runtime.name);
  config_.runtime.version = "9999999999999";
  EXPECT_EQ(longest(config_.runtime.name), ofUnknownVersion - 1) << "twelve digits are kept for it";
}

TEST_F(LintNames, WarnsOfWhatShellsTakeForSomethingElse) {
  for (const char c : {'"', '$', '`', '\\'}) {
    config_.application.name = std::string("a") + c;
    const Findings findings = lint();
    ASSERT_EQ(rulesOf(findings), Rules{"name-quote"}) << c;
    EXPECT_EQ(findings[0].severity, Severity::kWarning);
  }
  config_.application.name = "it's (fine)";
  EXPECT_EQ(rulesOf(lint()), Rules{});
}

TEST_F(LintNames, LooksAtTheExecutable) {
  config_.application.executable = "a/b";
  EXPECT_EQ(findingOf(lint(), "name").what.find("application.executable holds a \"/\""), 0u);
}

TEST_F(LintNames, WarnsOfAnIdentifierThatNobodyWrote) {
  config_.filledIn = {"application.identifier"};
  const Findings findings = lint();
  ASSERT_EQ(rulesOf(findings), Rules{"identifier"});
  EXPECT_EQ(findings[0].severity, Severity::kWarning);
  EXPECT_EQ(findings[0].what,
            "application.identifier is missing; \"com.example.hello\" is used, which another "
            "application may have");
}

TEST_F(LintNames, LooksAtAnIdentifierThatIsGiven) {
  for (const char* identifier : {"com.example.my app", "com_example", "com.ex\xc3\xa4mple"}) {
    config_.application.identifier = identifier;
    config_.places.erase("application.identifier");
    EXPECT_EQ(rulesOf(lint()), Rules{}) << "it was made from the name";
    config_.places["application.identifier"] = {"quillory.toml", 6};
    ASSERT_EQ(rulesOf(lint()), Rules{"identifier"}) << identifier;
    EXPECT_EQ(lint()[0].severity, Severity::kWarning);
  }
  config_.application.identifier = "com.example.My-App.2";
  EXPECT_EQ(rulesOf(lint()), Rules{});
}

}  // namespace
}  // namespace quillory::pack
