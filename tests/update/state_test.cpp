#include "update/state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using update::askFor;
using update::bytesOf;
using update::Phase;
using update::readState;
using update::State;
using update::stateOf;
using update::writeState;

State fullState() {
  State state;
  state.highestRelease = 7;
  state.draw = "00112233445566778899aabbccddeeff";
  state.lastCheck = 1790000000;
  state.lastAnswer = 1789990000;
  state.answerETag = "\"5f-1\"";
  state.keys = {"3001", "3002"};
  state.phase = Phase::kStaged;
  state.reason = "the disk is full\nindeed";
  state.offer = {8, "4", "1.3", 360000, true, "- Opens *faster*\n"};
  state.stagedVersion = "4";
  state.previousVersion = "2";
  state.skippedVersion = "3";
  state.remindAfter = 1790001000;
  state.withdrawn = {"3"};
  state.failures = 2;
  state.nextCheck = 1790086400;
  state.chosenChannel = "beta";
  state.askedChannel = "beta";
  state.otherChannels = {{"stable", 5}};
  return state;
}

TEST(State, ComesBackAsItWasWritten) {
  const TempDir folder;
  ASSERT_TRUE(writeState(fullState(), folder.str()));
  EXPECT_EQ(readState(folder.str()), fullState());
  EXPECT_EQ(modeOf(folder / "state"), 0644u);
}

TEST(State, IsWhatItsPageShows) {
  EXPECT_EQ(stateOf(pageExample("formats/update-state.md")), fullState());
  EXPECT_EQ(bytesOf(fullState()), pageExample("formats/update-state.md"));
}

TEST(State, IsNewWhereNothingIsKnown) {
  const TempDir folder;
  EXPECT_EQ(readState(folder.str()), State());
}

TEST(State, BeginsAnewWhereItIsDamaged) {
  const TempDir folder;
  const std::string bytes = bytesOf(fullState());
  const CapturedLog log;
  const ScopedReplace quiet(
      logCalls.show, +[](const char*, std::size_t) {});
  for (std::size_t length = 0; length < bytes.size(); ++length)
    EXPECT_EQ(stateOf(bytes.substr(0, length)), std::nullopt) << length;
  writeFile(folder / "state", bytes.substr(0, 20));
  EXPECT_EQ(readState(folder.str()), State());
  EXPECT_TRUE(log.contains("What was known about updates is damaged"));
}

TEST(State, OfAnotherVersionIsNotGuessedAt) {
  std::string bytes = bytesOf(fullState());
  bytes[0] = '2';
  EXPECT_EQ(stateOf(bytes), std::nullopt);
}

TEST(State, WithMoreBehindItIsThatOfANewerProgram) {
  EXPECT_EQ(stateOf(bytesOf(fullState()) + "more" + '\0'), fullState());
}

TEST(State, CanBeReadWhateverAServerOrTheSystemSaid) {
  State state;
  state.answerETag = std::string("\"a\x01\xff\"") + std::string(5000, 'x');
  state.reason = std::string("caf\xe9: \0no", 9);
  const std::optional<State> back = stateOf(bytesOf(state));
  ASSERT_TRUE(back);
  EXPECT_EQ(back->reason, "caf?: ?no");
  EXPECT_EQ(back->answerETag.substr(0, 5), "\"a??\"");
}

TEST(State, IsNotReadThroughALink) {
  const TempDir folder;
  writeFile(folder / "elsewhere", bytesOf(fullState()));
  ASSERT_EQ(symlink((folder / "elsewhere").c_str(), (folder / "state").c_str()), 0);
  EXPECT_EQ(readState(folder.str()), State());
}

TEST(AskFor, RemembersEachChannelsHighestRelease) {
  State state;
  askFor(state, "stable");
  state.highestRelease = 5;
  state.answerETag = "\"1\"";
  askFor(state, "stable");
  EXPECT_EQ(state.answerETag, "\"1\"");
  askFor(state, "beta");
  EXPECT_EQ(state.highestRelease, 0);
  EXPECT_EQ(state.answerETag, "");
  state.highestRelease = 40;
  askFor(state, "stable");
  EXPECT_EQ(state.highestRelease, 5);
  EXPECT_THAT(state.otherChannels, ElementsAre(Pair("beta", 40)));
}

TEST(AskFor, RemembersSoManyChannelsAndNoMore) {
  State state;
  for (std::size_t i = 0; i < 3 * update::kMaxChannels; ++i)
    askFor(state, "channel" + std::to_string(i));
  EXPECT_EQ(state.otherChannels.size(), update::kMaxChannels);
  EXPECT_EQ(stateOf(bytesOf(state)), state);
}

}  // namespace
}  // namespace quillory::testing
