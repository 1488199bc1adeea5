// What the entry says in the system log before any other thread is there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/e2e/launcher_run.h"

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// The messages of the system log: what stands behind "<time> <program>[<process>:<thread>] ".
std::vector<std::string> systemLogOf(const ChildResult& result) {
  std::vector<std::string> messages;
  std::istringstream stream(result.err);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t end = line.find("] ");
    if (line.rfind("launcher[", end) != std::string::npos) messages.push_back(line.substr(end + 2));
  }
  return messages;
}

class MainLog : public ::testing::Test {
 protected:
  TempDir folder_;
  TestUser user_;
  HandMadeBundle bundle_{folder_.str(), quickTail(), {{"jre_name", "JRE"}}};
};

TEST_F(MainLog, BeginsWithTheArgumentsAndTheStepsOfTheEntryInOrder) {
  const ChildResult result = start(bundle_, user_, {"two words", "", "100%s %n"});
  EXPECT_EQ(result.exitStatus, 0);
  std::vector<std::string> messages = systemLogOf(result);
  std::erase(messages, "There is no display: the splash is not shown.");  // Cocoa's own
  messages.resize(std::min<std::size_t>(messages.size(), 9));
  EXPECT_THAT(
      messages,
      ElementsAre("------------OSsX Wrapper Start-------------", "main(0)=" + bundle_.executable(),
                  "main(1)=two words", "main(2)=", "main(3)=100%s %n", "Starting up runner",
                  "Created application", "[Wrapper] Registering shared apple event manager handler",
                  "Registered OS X Event Listener"))
      << result.err;
}

TEST_F(MainLog, TellsTheProgramsNameAloneWithoutArguments) {
  const std::vector<std::string> messages = systemLogOf(start(bundle_, user_));
  ASSERT_GE(messages.size(), 3U);
  EXPECT_EQ(messages[0], "------------OSsX Wrapper Start-------------");
  EXPECT_EQ(messages[1], "main(0)=" + bundle_.executable());
  EXPECT_EQ(messages[2], "Starting up runner");
}

TEST_F(MainLog, SaysEachOfThemOnceAndInTheSystemLogOnly) {
  const ChildResult result = start(bundle_, user_);
  const std::vector<std::string> messages = systemLogOf(result);
  for (const char* line : {"------------OSsX Wrapper Start-------------", "Starting up runner",
                           "Created application", "Registered OS X Event Listener"}) {
    EXPECT_EQ(std::count(messages.begin(), messages.end(), line), 1) << line;
    EXPECT_THAT(result.out, Not(HasSubstr(line)));
  }
  EXPECT_THAT(result.out, Not(HasSubstr("main(0)=")));
}

}  // namespace
}  // namespace quillory::testing
