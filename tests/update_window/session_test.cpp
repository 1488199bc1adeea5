// With shell scripts for quillory-update.
#include "update_window/session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "tests/harness/eventually.h"
#include "tests/harness/temp_dir.h"
#include "update_window/text_display.h"

namespace quillory::window {
namespace {

namespace fs = std::filesystem;
using ::quillory::testing::eventually;
using ::quillory::testing::readFile;
using ::quillory::testing::TempDir;
using ::quillory::testing::writeFile;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SessionTest : public ::testing::Test {
 protected:
  SessionTest() { options_.properties = dir_ / "none"; }

  /// Starts one with a script that does `rest`; `answers` as Session has it.
  int run(const std::string& rest, bool answers = false) {
    const std::string program = dir_ / "quillory-update";
    writeFile(program, "#!/bin/sh\necho \"$@\" >> '" + (dir_ / "said") + "'\n" + rest + "\n");
    chmod(program.c_str(), 0755);
    Session session(
        options_, commandFor(options_, program),
        [this](const WindowContent& content) {
          shown_.push_back(content);
          onShow_(content);
        },
        answers);
    session_ = &session;
    return session.run();
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const WindowContent& content : shown_) result.push_back(content.text);
    return result;
  }

  TempDir dir_;
  Options options_{.isFirst = true};
  std::vector<WindowContent> shown_;
  std::function<void(const WindowContent&)> onShow_ = [](const WindowContent&) {};
  Session* session_ = nullptr;
};

TEST_F(SessionTest, RunsAnInstallationAndEndsWithIt) {
  options_.ownFolder = "/own folder";
  EXPECT_EQ(run("echo offer version=2 size=10\nprintf 'progress done=5 total=10\\ndone version=2'"),
            kExitDone);
  EXPECT_EQ(readFile(dir_ / "said"),
            "install --properties " + (dir_ / "none") + " --own-folder /own folder\n");
  EXPECT_THAT(texts(), Contains("Loading\xE2\x80\xA6"));
  EXPECT_EQ(shown_.front().heading, "Installing the application");
}

TEST_F(SessionTest, ShowsNothingOfAnUpdateThatThereIsNot) {
  options_.isFirst = false;
  EXPECT_EQ(run("echo phase name=CHECKING\necho none newest=2"), kExitDone);
  EXPECT_THAT(shown_, IsEmpty());
}

TEST_F(SessionTest, EndsWithTheFailureWhereNobodyCanAnswer) {
  EXPECT_EQ(run("echo failed reason=broken retry=1\nexit 1"), kExitFailed);
  EXPECT_EQ(shown_.back().text, "broken");
  EXPECT_EQ(run("exit 3"), kExitOff);
  EXPECT_EQ(run("exit 4"), kExitNeedsAdministrator);
  EXPECT_EQ(run("kill -KILL $$"), kExitFailed);
}

TEST_F(SessionTest, TriesAgainWhenItIsAsked) {
  onShow_ = [this](const WindowContent& content) {
    // By another thread, as the window does it.
    if (content.isError) std::thread([this] { session_->press(Button::kTryAgain); }).join();
  };
  // The answer may come before the session waits for it: it counts all the same.
  EXPECT_EQ(run("[ -e '" + (dir_ / "second") + "' ] && exit 0\ntouch '" + (dir_ / "second") +
                    "'\necho failed reason=broken retry=1\nexit 1",
                true),
            kExitDone);
  EXPECT_EQ(shown_.back().isError, false);
}

TEST_F(SessionTest, EndsWithTheFailureWhenTheUserHadEnough) {
  onShow_ = [this](const WindowContent& content) {
    if (content.isError) session_->press(Button::kQuit);
  };
  EXPECT_EQ(run("echo failed reason=broken retry=1\nexit 1", true), kExitFailed);
}

TEST_F(SessionTest, CancelsARunAndWaitsForItsEnd) {
  onShow_ = [this](const WindowContent& content) {
    if (content.text.starts_with("Loading")) session_->press(Button::kCancel);
  };
  EXPECT_EQ(run("trap 'touch \"" + (dir_ / "cancelled") +
                    "\"; exit 1' TERM\necho progress done=1 total=2\nwhile :; do sleep 0.02; done",
                true),
            kExitCancelled);
  EXPECT_TRUE(fs::exists(dir_ / "cancelled"));
}

TEST_F(SessionTest, WaitsForAnotherUpdateAndTriesAgain) {
  EXPECT_EQ(run("[ -e '" + (dir_ / "second") + "' ] && exit 0\ntouch '" + (dir_ / "second") +
                "'\necho busy\nexit 75"),
            kExitDone);
  EXPECT_THAT(texts(),
              Contains("Another update of it is at work. Waiting for its end\xE2\x80\xA6"));
}

TEST_F(SessionTest, LeavesTheUpdateAloneWhenItsTimeIsOver) {
  options_ = {.isFirst = false, .atMostSeconds = 1, .properties = dir_ / "none"};
  EXPECT_EQ(run("echo offer version=2\nwhile [ ! -e '" + (dir_ / "go") +
                "' ]; do sleep 0.02; done\ntouch '" + (dir_ / "went on") + "'"),
            kExitGoesOnAlone);
  writeFile(dir_ / "go", "");
  EXPECT_TRUE(eventually([&] { return fs::exists(dir_ / "went on"); }));
}

TEST_F(SessionTest, HoldsNobodyUpWithAnErrorWhoOnlyWaitsForSomeSeconds) {
  options_ = {.isFirst = false, .atMostSeconds = 60, .properties = dir_ / "none"};
  EXPECT_EQ(run("echo offer version=2\necho failed reason=broken retry=1\nexit 1", true),
            kExitFailed);
  EXPECT_EQ(run("exit 75", true), kExitFailed);
  for (const WindowContent& content : shown_) EXPECT_FALSE(content.isError);
}

TEST_F(SessionTest, SaysSoWhenThereIsNoProgram) {
  Session session(
      options_, {dir_ / "none"},
      [this](const WindowContent& content) { shown_.push_back(content); }, false);
  EXPECT_EQ(session.run(), kExitFailed);
  EXPECT_EQ(shown_.back().text, "The update program could not do its work.");
}

TEST(TextDisplay, TellsEachTenthAndWhatIsNew) {
  std::vector<std::string> lines;
  TextDisplay display([&](const std::string& line) { lines.push_back(line); });
  WindowContent content = {.heading = "Installing Demo", .text = "Loading"};
  for (int percent = 0; percent <= 20; ++percent) {
    content.fraction = percent / 100.0;
    content.detail = std::to_string(percent) + " of 100";
    display.show(content);
  }
  content.text = "Unpacking";
  content.detail = "";
  display.show(content);
  EXPECT_THAT(lines, ElementsAre("Installing Demo", "  Loading  0 of 100", "  Loading  10 of 100",
                                 "  Loading  20 of 100", "  Unpacking"));
}

}  // namespace
}  // namespace quillory::window
