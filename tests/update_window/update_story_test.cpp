#include "update_window/update_story.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory::window {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

void take(UpdateStory& story, const char* line) { story.take(parseUpdateLine(line)); }

TEST(UpdateStory, OfAFirstInstallationIsShownFromItsBeginning) {
  const UpdateStory story("Demo", Occasion::kFirst);
  EXPECT_TRUE(story.isWorthAWindow());
  EXPECT_EQ(story.content().heading, "Installing Demo");
  EXPECT_EQ(story.content().text, "Looking for the newest version\xE2\x80\xA6");
  EXPECT_TRUE(story.content().hasBar);
  EXPECT_THAT(story.content().buttons, ElementsAre(Button::kCancel));
}

TEST(UpdateStory, OfAnUpdateIsShownOnceThereIsSomethingToLoad) {
  UpdateStory story("Demo", Occasion::kUpdate);
  take(story, "phase name=CHECKING");
  EXPECT_FALSE(story.isWorthAWindow());
  take(story, "offer release=7 version=2 shown=1.2%20beta size=360000 critical=1");
  EXPECT_TRUE(story.isWorthAWindow());
  EXPECT_EQ(story.content().heading, "Updating Demo to version 1.2 beta");
  EXPECT_EQ(story.content().detail, "360 KB to load");
  EXPECT_THAT(story.content().buttons, ElementsAre(Button::kStartAnyway));
}

TEST(UpdateStory, TellsBytesRateAndRest) {
  UpdateStory story("Demo", Occasion::kFirst);
  take(story, "offer release=7 version=2 shown= size=38000000");
  EXPECT_EQ(story.content().heading, "Installing Demo 2");
  take(story, "progress done=0 total=38000000");
  EXPECT_EQ(story.content().detail, "0.0 MB of 38.0 MB");
  take(story, "progress done=9500000 total=38000000 rate=1200000 rest=24");
  EXPECT_EQ(story.content().detail,
            "9.5 MB of 38.0 MB  \xC2\xB7  1.2 MB/s  \xC2\xB7  about 25 seconds left");
  EXPECT_DOUBLE_EQ(story.content().fraction, 0.25);
  take(story, "progress done=50000000 total=38000000");
  EXPECT_DOUBLE_EQ(story.content().fraction, 1);
  take(story, "progress done=5 total=0");
  EXPECT_DOUBLE_EQ(story.content().fraction, 0);
}

TEST(UpdateStory, TellsTheStepsBehindTheLoading) {
  UpdateStory story("Demo", Occasion::kFirst);
  take(story, "progress done=30 total=40");
  static constexpr struct {
    const char* what;
    const char* text;
  } kCases[] = {{"verify", "Checking what was loaded"},
                {"restore", "Putting it together"},
                {"unpack", "Unpacking"},
                {"install", "Installing"}};
  for (const auto& [what, text] : kCases) {
    take(story, (std::string("step component=application what=") + what).c_str());
    EXPECT_EQ(story.content().text, std::string(text) + "\xE2\x80\xA6");
    EXPECT_DOUBLE_EQ(story.content().fraction, 0.75) << "the bar stays where it was";
  }
  take(story, "done version=2 release=7");
  EXPECT_DOUBLE_EQ(story.content().fraction, 1);
}

TEST(UpdateStory, OfAFailureSaysWhyAndWhatToDo) {
  static constexpr struct {
    const char* line;
    const char* advice;
    bool mayTryAgain;
  } kCases[] = {
      {"failed reason=Could%20not%20resolve%20host retry=1", "Check the connection", true},
      {"failed reason=x:%20No%20space%20left%20on%20device retry=1", "Make room on the disk", true},
      {"failed reason=x:%20Permission%20denied retry=1", "may not write", true},
      {"failed reason=x:%20Read-only%20file%20system retry=1", "may not write", true},
      {"failed reason=signature retry=0", "Ask who provides the application", false}};
  for (const auto& [line, advice, mayTryAgain] : kCases) {
    SCOPED_TRACE(line);
    UpdateStory story("Demo", Occasion::kFirst);
    take(story, line);
    story.end(kExitFailed);
    EXPECT_EQ(story.content().heading, "Demo could not be installed");
    EXPECT_EQ(story.content().text, parseUpdateLine(line).text("reason"));
    EXPECT_THAT(story.content().detail, HasSubstr(advice));
    EXPECT_TRUE(story.content().isError);
    EXPECT_FALSE(story.content().hasBar);
    EXPECT_EQ(story.content().buttons, mayTryAgain ? std::vector({Button::kTryAgain, Button::kQuit})
                                                   : std::vector({Button::kQuit}));
  }
}

TEST(UpdateStory, OfAFailureWithoutALineSaysSo) {
  UpdateStory story("Demo", Occasion::kFirst);
  story.end(127);
  EXPECT_EQ(story.content().text, "The update program could not do its work.");
}

TEST(UpdateStory, WhereAVersionIsThereItMayBeStartedAllTheSame) {
  UpdateStory story("Demo", Occasion::kUpdate);
  take(story, "failed reason=x retry=1");
  story.end(kExitFailed);
  EXPECT_EQ(story.content().heading, "The update of Demo could not be loaded");
  EXPECT_THAT(story.content().buttons, ElementsAre(Button::kTryAgain, Button::kStartAnyway));
}

TEST(UpdateStory, SaysWhoCanHelpWhereTheUserCannot) {
  UpdateStory off("Demo", Occasion::kFirst);
  off.end(kExitOff);
  EXPECT_EQ(off.content().text, "Updates are switched off on this computer.");
  EXPECT_THAT(off.content().buttons, ElementsAre(Button::kQuit));
  UpdateStory all("Demo", Occasion::kFirst);
  all.end(kExitNeedsAdministrator);
  EXPECT_THAT(all.content().detail, HasSubstr("administrator"));
  EXPECT_THAT(all.content().buttons, ElementsAre(Button::kAsAdministrator, Button::kQuit));
}

TEST(UpdateStory, BeginsAgainWithNothingOfTheRunBefore) {
  UpdateStory story("Demo", Occasion::kFirst);
  const WindowContent first = story.content();
  take(story, "progress done=30 total=40");
  take(story, "failed reason=x retry=0");
  story.end(kExitFailed);
  story.beginAgain();
  EXPECT_EQ(story.content(), first);
  story.end(kExitFailed);
  EXPECT_EQ(story.content().text, "The update program could not do its work.");
}

TEST(UpdateStory, WaitsForAnotherUpdate) {
  UpdateStory story("Demo", Occasion::kFirst);
  take(story, "busy");
  story.end(kExitBusy);
  EXPECT_TRUE(story.isWaiting());
  EXPECT_FALSE(story.content().isError);
  story.beginAgain();
  EXPECT_FALSE(story.isWaiting());
}

}  // namespace
}  // namespace quillory::window
