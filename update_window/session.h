// From the first line of quillory-update to the status that the window's program ends with: what is
// shown when, and what the buttons do. Knows no window.
#pragma once
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "update_window/options.h"
#include "update_window/update_run.h"
#include "update_window/update_story.h"

namespace quillory::window {

class Session {
 public:
  using Show = std::function<void(const WindowContent&)>;

  /// `show` is called by the thread of run(), for each change; only when there is something to
  /// show. `answers`: whether there is anybody who presses buttons. Without, an error ends it.
  Session(const Options& options, std::vector<std::string> command, Show show, bool answers);

  /// To the end, whose status it returns.
  int run();

  /// Any thread.
  void press(Button button);

 private:
  bool isWanted();
  void tell(
      const std::vector<std::string>& words,
      const UpdateRun::OnLine& onLine = [](const UpdateLine&) {}) const;
  std::optional<int> runOnce();
  std::optional<int> statusAfter(std::optional<int> ended);
  void showStory();
  Button waitForButton();
  bool waitForOther();

  const Options options_;
  const std::vector<std::string> command_;
  const Show show_;
  const bool answers_;
  UpdateStory story_;
  bool elevates_ = false;  ///< the user wants an administrator to be asked

  std::mutex mutex_;
  std::condition_variable pressed_;
  std::optional<Button> button_;
  std::shared_ptr<UpdateRun> running_;
};

}  // namespace quillory::window
