#include "update_window/session.h"

#include <chrono>
#include <ctime>
#include <utility>

namespace quillory::window {
namespace {

constexpr std::chrono::seconds kPauseForOther{1};

}  // namespace

Session::Session(const Options& options, std::vector<std::string> command, Show show, bool answers)
    : options_(options),
      command_(std::move(command)),
      show_(std::move(show)),
      answers_(answers),
      story_(appNameIn(options.properties), options.occasion) {}

int Session::run() {
  if (options_.occasion == Occasion::kAsk && !isWanted()) return kExitCancelled;
  for (;;) {
    const std::optional<int> status = runOnce();
    if (status) return *status;
    story_.beginAgain();
  }
}

// Whether the user says so. Without anything to be asked, or anybody to be asked, it is not.
bool Session::isWanted() {
  UpdateLine status;
  tell({"status"}, [&status](const UpdateLine& line) { status = line; });
  if (!answers_ || !story_.ask(status, std::time(nullptr))) return false;
  // What nobody answers is asked again tomorrow, and not by the next start beside this window.
  tell({"remind-later"});
  showStory();
  const Button button = waitForButton();
  if (button == Button::kSkip) tell({"skip", status.text("offered")});
  if (button != Button::kLoad) return false;
  story_.beginAgain();
  return true;
}

void Session::tell(const std::vector<std::string>& words, const UpdateRun::OnLine& onLine) const {
  UpdateRun().run(commandFor(options_, command_.front(), words), 0, onLine);
}

// Nothing when it is to be tried again.
std::optional<int> Session::runOnce() {
  const auto run = std::make_shared<UpdateRun>();
  {
    const std::lock_guard lock(mutex_);
    running_ = run;
    button_.reset();
  }
  showStory();
  std::vector<std::string> command = command_;
  if (elevates_) command.emplace_back("--elevate");
  const std::optional<int> ended =
      run->run(command, options_.atMostSeconds, [this](const UpdateLine& line) {
        story_.take(line);
        showStory();
      });
  {
    const std::lock_guard lock(mutex_);
    running_.reset();
  }
  if (run->isCancelled()) return kExitCancelled;
  return statusAfter(ended);
}

std::optional<int> Session::statusAfter(std::optional<int> ended) {
  if (!ended) return kExitGoesOnAlone;
  story_.end(*ended);
  if (*ended == kExitDone) {
    if (options_.occasion == Occasion::kAsk) {
      showStory();
      waitForButton();
    }
    return kExitDone;
  }
  if (story_.isWaiting() && options_.atMostSeconds == 0) {
    showStory();
    return waitForOther() ? std::nullopt : std::optional(kExitCancelled);
  }
  const bool isKnown = *ended == kExitOff || *ended == kExitNeedsAdministrator;
  const int status = isKnown ? *ended : kExitFailed;
  // Who only waits for some seconds is not to be held up by an error.
  if (options_.atMostSeconds > 0 || (options_.occasion == Occasion::kUpdate && isKnown))
    return status;
  showStory();
  if (!answers_) return status;
  const Button button = waitForButton();
  if (button == Button::kAsAdministrator) elevates_ = true;
  const bool isToGoOn = button == Button::kTryAgain || button == Button::kAsAdministrator;
  return isToGoOn ? std::nullopt : std::optional(status);
}

void Session::showStory() {
  if (story_.isWorthAWindow()) show_(story_.content());
}

Button Session::waitForButton() {
  std::unique_lock lock(mutex_);
  pressed_.wait(lock, [this] { return button_.has_value(); });
  return *button_;
}

// False when the user does not want to wait.
bool Session::waitForOther() {
  std::unique_lock lock(mutex_);
  return !pressed_.wait_for(lock, kPauseForOther, [this] { return button_.has_value(); });
}

void Session::press(Button button) {
  const std::lock_guard lock(mutex_);
  button_ = button;
  if (running_) running_->cancel();
  pressed_.notify_all();
}

}  // namespace quillory::window
