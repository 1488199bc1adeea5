// With shell scripts for quillory-update.
#include "update_window/session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <sstream>
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
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
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
  Options options_{.occasion = Occasion::kFirst};
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
  options_.occasion = Occasion::kUpdate;
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

TEST_F(SessionTest, HasAnAdministratorAskedWhenTheUserWantsIt) {
  onShow_ = [this](const WindowContent& content) {
    if (content.isError) session_->press(Button::kAsAdministrator);
  };
  EXPECT_EQ(run("case \"$*\" in *' --elevate') exit 0;; esac\nexit 4", true), kExitDone);
  const std::string plain = "install --properties " + (dir_ / "none");
  EXPECT_EQ(readFile(dir_ / "said"), plain + "\n" + plain + " --elevate\n");
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
  options_ = {.occasion = Occasion::kUpdate, .atMostSeconds = 1, .properties = dir_ / "none"};
  EXPECT_EQ(run("echo offer version=2\nwhile [ ! -e '" + (dir_ / "go") +
                "' ]; do sleep 0.02; done\ntouch '" + (dir_ / "went on") + "'"),
            kExitGoesOnAlone);
  writeFile(dir_ / "go", "");
  EXPECT_TRUE(eventually([&] { return fs::exists(dir_ / "went on"); }));
}

TEST_F(SessionTest, HoldsNobodyUpWithAnErrorWhoOnlyWaitsForSomeSeconds) {
  options_ = {.occasion = Occasion::kUpdate, .atMostSeconds = 60, .properties = dir_ / "none"};
  EXPECT_EQ(run("echo offer version=2\necho failed reason=broken retry=1\nexit 1", true),
            kExitFailed);
  EXPECT_EQ(run("exit 75", true), kExitFailed);
  for (const WindowContent& content : shown_) EXPECT_FALSE(content.isError);
}

// What a quillory-update says whose state has an offer, and what the script does otherwise.
std::string offering(const std::string& install, const std::string& keys = "skipped= remind=0") {
  return "if [ $1 = status ]; then echo status phase=AVAILABLE offered=2 shown=1.2 size=3000000 " +
         keys + "; fi\nif [ $1 = install ]; then\n" + install + "\nfi";
}

class AskingSession : public SessionTest {
 protected:
  AskingSession() {
    options_.occasion = Occasion::kAsk;
    onShow_ = [this](const WindowContent& content) {
      if (!content.isError && !content.hasBar) session_->press(answer_);
      if (content.buttons == std::vector{Button::kClose}) session_->press(Button::kClose);
    };
  }
  /// The commands that were given, without their options.
  std::vector<std::string> commands() const {
    std::vector<std::string> result;
    std::istringstream lines(readFile(dir_ / "said"));
    for (std::string line; std::getline(lines, line);)
      result.push_back(line.substr(0, line.find(" --properties")));
    return result;
  }

  Button answer_ = Button::kLoad;
};

TEST_F(AskingSession, LoadsWhatTheUserWants) {
  EXPECT_EQ(run(offering("echo progress done=1 total=2\necho done version=2"), true), kExitDone);
  EXPECT_THAT(commands(), ElementsAre("status", "remind-later", "install"));
  EXPECT_EQ(shown_.front().heading, "Version 1.2 of the application is there");
  EXPECT_THAT(shown_.front().text, HasSubstr("3.0 MB"));
  EXPECT_EQ(shown_.back().text, "It is ready.");
}

TEST_F(AskingSession, AsksAgainTomorrowWhoWantsItLater) {
  answer_ = Button::kLater;
  EXPECT_EQ(run(offering("touch '" + (dir_ / "installed") + "'"), true), kExitCancelled);
  EXPECT_THAT(commands(), ElementsAre("status", "remind-later"));
  EXPECT_FALSE(fs::exists(dir_ / "installed"));
}

TEST_F(AskingSession, SkipsAVersionForWhoDoesNotWantIt) {
  answer_ = Button::kSkip;
  EXPECT_EQ(run(offering(""), true), kExitCancelled);
  EXPECT_THAT(commands(), ElementsAre("status", "remind-later", "skip 2"));
}

TEST_F(AskingSession, ShowsNothingOfWhatIsNotToBeAsked) {
  EXPECT_EQ(run(offering("", "skipped=2 remind=0"), true), kExitCancelled);
  EXPECT_EQ(run(offering("", "skipped= remind=99999999999"), true), kExitCancelled);
  EXPECT_EQ(run("echo status phase=STAGED offered=2", true), kExitCancelled);
  EXPECT_EQ(run("echo status phase=AVAILABLE offered=", true), kExitCancelled);
  EXPECT_EQ(run(offering("")), kExitCancelled) << "without a display nobody is asked";
  EXPECT_THAT(shown_, IsEmpty());
  EXPECT_THAT(commands(), Each("status"));
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
