#include "update_window/update_story.h"

#include <algorithm>
#include <utility>

#include "update_window/amounts.h"

namespace quillory::window {
namespace {

constexpr char kSpacer[] = "  \xC2\xB7  ";  // A middle dot.
constexpr char kDots[] = "\xE2\x80\xA6";

bool holds(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

const char* titleOf(Button button) {
  switch (button) {
    case Button::kCancel:
      return "Cancel";
    case Button::kTryAgain:
      return "Try again";
    case Button::kAsAdministrator:
      return "As administrator";
    case Button::kQuit:
      return "Quit";
    case Button::kStartAnyway:
      return "Start without it";
    case Button::kLoad:
      return "Load it now";
    case Button::kLater:
      return "Later";
    case Button::kSkip:
      return "Skip this version";
    case Button::kClose:
      return "Close";
  }
  return "";
}

UpdateStory::UpdateStory(std::string appName, Occasion occasion)
    : appName_(std::move(appName)), occasion_(occasion), isFirst_(occasion == Occasion::kFirst) {
  beginAgain();
}

void UpdateStory::beginAgain() {
  content_ = {.heading = (isFirst_ ? "Installing " : "Updating ") + appName_,
              .text = std::string("Looking for the newest version") + kDots,
              .hasBar = true,
              .buttons = {occasion_ == Occasion::kUpdate ? Button::kStartAnyway : Button::kCancel}};
  isWorthAWindow_ = isFirst_ || isWorthAWindow_;
  isWaiting_ = false;
  reason_.clear();
  isWorthRetrying_ = true;
}

bool UpdateStory::ask(const UpdateLine& status, std::int64_t now) {
  const std::string version = status.text("offered");
  const bool isPutOff = version == status.text("skipped") || status.number("remind") > now;
  if (status.text("phase") != "AVAILABLE" || version.empty() || isPutOff) return false;
  const std::string shown = status.text("shown");
  content_ = {
      .heading = "Version " + (shown.empty() ? version : shown) + " of " + appName_ + " is there",
      .text = "It can be loaded while you go on: " + amountOf(status.number("size")) + ".",
      .detail = "The next start has it.",
      .buttons = {Button::kLoad, Button::kLater, Button::kSkip}};
  isWorthAWindow_ = true;
  return true;
}

void UpdateStory::take(const UpdateLine& line) {
  if (line.word == "offer") takeOffer(line);
  if (line.word == "progress") takeProgress(line);
  if (line.word == "step") takeStep(line);
  if (line.word == "done") {
    content_.text = "It is ready.";
    content_.detail.clear();
    content_.fraction = 1;
  }
  if (line.word == "failed") {
    reason_ = line.text("reason");
    isWorthRetrying_ = line.number("retry") == 1;
  }
}

void UpdateStory::takeOffer(const UpdateLine& line) {
  isWorthAWindow_ = true;
  const std::string shown = line.text("shown");
  const std::string version = shown.empty() ? line.text("version") : shown;
  content_.heading = (isFirst_ ? "Installing " : "Updating ") + appName_ +
                     (isFirst_ ? " " : " to version ") + version;
  content_.text = std::string("Connecting") + kDots;
  content_.detail = amountOf(line.number("size")) + " to load";
}

void UpdateStory::takeProgress(const UpdateLine& line) {
  const std::int64_t total = line.number("total");
  const std::int64_t done = std::min(line.number("done"), total);
  content_.text = std::string("Loading") + kDots;
  content_.fraction = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0;
  content_.detail = partOf(done, total);
  const std::int64_t rate = line.number("rate");
  if (rate > 0) content_.detail += kSpacer + amountOf(rate) + "/s";
  if (rate > 0 && line.values.contains("rest"))
    content_.detail += kSpacer + timeLeft(line.number("rest"));
}

void UpdateStory::takeStep(const UpdateLine& line) {
  const std::string what = line.text("what");
  content_.text = what == "verify"    ? "Checking what was loaded"
                  : what == "restore" ? "Putting it together"
                  : what == "unpack"  ? "Unpacking"
                                      : "Installing";
  content_.text += kDots;
  content_.detail.clear();
}

void UpdateStory::end(int status) {
  switch (status) {
    case kExitDone:
      // Who has been asked is told; a start only waits for this.
      if (occasion_ == Occasion::kAsk) {
        content_.detail = "The next start has it.";
        content_.buttons = {Button::kClose};
      }
      return;
    case kExitBusy:
      isWaiting_ = true;
      content_.text = std::string("Another update of it is at work. Waiting for its end") + kDots;
      return;
    case kExitOff:
      fail("Updates are switched off on this computer.",
           "Ask who looks after it, or install the application from its full installer.", false);
      return;
    case kExitNeedsAdministrator:
      fail("The application is installed for all users.",
           "It takes an administrator, whose password is asked for.", false);
      content_.buttons.insert(content_.buttons.begin(), Button::kAsAdministrator);
      return;
    default:
      fail(reason_.empty() ? "The update program could not do its work." : reason_,
           adviceFor(reason_), isWorthRetrying_);
  }
}

std::string UpdateStory::adviceFor(const std::string& reason) const {
  if (holds(reason, "No space left") || holds(reason, "quota") || holds(reason, "disk is full"))
    return "Make room on the disk, and try again. What has been loaded is kept.";
  if (holds(reason, "Permission denied") || holds(reason, "Read-only"))
    return "Your account may not write to the installation. Ask who looks after this computer.";
  if (!isWorthRetrying_)
    return "Ask who provides the application. The log of the update says more.";
  return "Check the connection to the network, and try again. What has been loaded is kept.";
}

void UpdateStory::fail(const std::string& what, const std::string& advice, bool mayTryAgain) {
  isWorthAWindow_ = true;
  content_.heading = (isFirst_ ? "" : "The update of ") + appName_ +
                     (isFirst_ ? " could not be installed" : " could not be loaded");
  content_.text = what;
  content_.detail = advice;
  content_.hasBar = false;
  content_.isError = true;
  content_.buttons.clear();
  if (mayTryAgain) content_.buttons.push_back(Button::kTryAgain);
  content_.buttons.push_back(isFirst_                         ? Button::kQuit
                             : occasion_ == Occasion::kUpdate ? Button::kStartAnyway
                                                              : Button::kClose);
}

}  // namespace quillory::window
