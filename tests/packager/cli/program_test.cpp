#include "packager/cli/program.h"

#include <gtest/gtest.h>

#include <set>

namespace quillory::pack {
namespace {

TEST(AllCommands, SayAllThatAHelpNeeds) {
  for (const Command& command : allCommands()) {
    SCOPED_TRACE(command.name);
    EXPECT_NE(command.description, "");
    EXPECT_TRUE(command.run);
    EXPECT_NE(command.example.find("quillory-pack " + command.name), std::string::npos);
    for (const Argument& argument : command.arguments) {
      EXPECT_NE(argument.name, "");
      EXPECT_NE(argument.description, "") << argument.name;
    }
  }
}

TEST(AllCommands, HaveNoTwoOptionsOfOneName) {
  TalkOptions talk;
  for (const Command& command : allCommands()) {
    std::vector<Argument> all = talkArguments(talk);
    all.insert(all.end(), command.arguments.begin(), command.arguments.end());
    all.push_back(helpArgument());
    std::set<std::string> names;
    for (const Argument& argument : all) {
      for (const std::string& name : namesOf(argument)) {
        EXPECT_TRUE(names.insert(name).second) << command.name << ' ' << name;
      }
    }
  }
}

TEST(AllCommands, ShareNothingBetweenTwoCalls) {
  const std::vector<Command> one = allCommands();
  const std::vector<Command> other = allCommands();
  for (std::size_t i = 0; i < one.size(); ++i) {
    for (std::size_t k = 0; k < one[i].arguments.size(); ++k) {
      EXPECT_NE(one[i].arguments[k].into, other[i].arguments[k].into) << one[i].name;
    }
  }
}

}  // namespace
}  // namespace quillory::pack
