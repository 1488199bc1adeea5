// Every line of a start, so that no line gets lost, changes or appears without notice. They stand
// in expected/, with <H> for the home folder, <M> for the master folder, <C> for the bundle's
// Contents, <W> for the working folder, and letters for numbers that differ from start to start.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "tests/e2e/launcher_run.h"

namespace quillory::testing {
namespace {

class CompleteLog : public ::testing::Test {
 protected:
  ChildResult startHere() {
    ChildOptions options = user_.options();
    options.directory = folder_.str();
    return runChild({bundle_.executable(), "one", "two words"}, options);
  }

  std::vector<std::string> linesOf(const std::string& output) const {
    std::string text = output;
    for (const auto& [path, letter] :
         {std::pair{user_.master(), "<M>"}, std::pair{user_.home(), "<H>"},
          std::pair{bundle_.contents(), "<C>"}, std::pair{folder_.str(), "<W>"}}) {
      for (std::size_t at = text.find(path); at != std::string::npos; at = text.find(path, at))
        text.replace(at, path.size(), letter);
    }
    static const std::pair<std::regex, const char*> kNumbers[] = {
        {std::regex("\\+[0-9]+ +"), "+"},
        {std::regex("Wrapper-[-0-9]{23}\\.log"), "Wrapper-T.log"},
        {std::regex("QuilloryTemp-[0-9]+-"), "QuilloryTemp-S-"},
        {std::regex("QYLaunchProperties-[0-9]+-"), "QYLaunchProperties-T-"},
        {std::regex("properties length is [0-9]+"), "properties length is N"},
        {std::regex("Spawn call done [0-9]+ 0"), "Spawn call done P 0"},
        {std::regex("pid=[0-9]+"), "pid=P"},
        {std::regex("Public Key: [0-9A-F]{8}"), "Public Key: K"},
        {std::regex("Produced hash: [0-9a-f]{64}"), "Produced hash: H"},
    };
    for (const auto& [number, letter] : kNumbers) text = std::regex_replace(text, number, letter);
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }

  void expectLines(const ChildResult& result, const std::string& name) const {
    EXPECT_EQ(result.exitStatus, 0);
    const std::vector<std::string> actual = linesOf(result.out);
    const std::vector<std::string> expected =
        linesOf(readFile(std::string(QUILLORY_EXPECTED_LOGS) + "/" + name));
    for (std::size_t i = 0; i < actual.size() && i < expected.size(); ++i)
      ASSERT_EQ(actual[i], expected[i]) << "line " << i + 1 << " of " << name;
    EXPECT_EQ(actual.size(), expected.size());
  }

  TempDir folder_;
  TestUser user_;
  HandMadeBundle bundle_{folder_.str(), quickTail(), {{"jre_name", "JRE"}}};
};

TEST_F(CompleteLog, OfAnInstallationAndOfAStartThatFindsItCurrent) {
  expectLines(startHere(), "first_start.log");
  EXPECT_FALSE(startedArguments(user_).empty());
  expectLines(startHere(), "second_start.log");
}

}  // namespace
}  // namespace quillory::testing
