// What the window shows of a run of quillory-update: its lines, told to people.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "update_window/options.h"
#include "update_window/update_line.h"

namespace quillory::window {

// Exit statuses of quillory-update, and of the window, which hands them on.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitOff = 3;
inline constexpr int kExitNeedsAdministrator = 4;
inline constexpr int kExitCancelled = 5;    ///< the window's own
inline constexpr int kExitGoesOnAlone = 6;  ///< the window's own: the time that it had is over
inline constexpr int kExitBusy = 75;

enum class Button {
  kCancel,
  kTryAgain,
  kAsAdministrator,
  kQuit,
  kStartAnyway,
  kLoad,
  kLater,
  kSkip,
  kClose,
};
const char* titleOf(Button button);

struct WindowContent {
  std::string heading{};
  std::string text{};
  std::string detail{};
  bool hasBar = false;
  double fraction = 0;  ///< 0 to 1, of the bar
  bool isError = false;
  std::vector<Button> buttons{};  ///< from the right; the first is the one to press

  bool operator==(const WindowContent&) const = default;
};

class UpdateStory {
 public:
  UpdateStory(std::string appName, Occasion occasion);

  void take(const UpdateLine& line);
  /// It has ended with that exit status, or could not be started.
  void end(int status);
  /// What is offered, to be answered before anything is loaded; nothing that is shown when the
  /// answer of `quillory-update status` offers nothing that the user has not put off.
  bool ask(const UpdateLine& status, std::int64_t now);
  /// Nothing is left of an earlier run.
  void beginAgain();

  const WindowContent& content() const { return content_; }
  /// Whether there is something to be loaded, or an error to be read.
  bool isWorthAWindow() const { return isWorthAWindow_; }
  /// Whether another program is at work, and it is tried again without asking anybody.
  bool isWaiting() const { return isWaiting_; }

 private:
  void takeOffer(const UpdateLine& line);
  void takeProgress(const UpdateLine& line);
  void takeStep(const UpdateLine& line);
  void fail(const std::string& what, const std::string& advice, bool mayTryAgain);
  std::string adviceFor(const std::string& reason) const;

  const std::string appName_;
  const Occasion occasion_;
  const bool isFirst_;  ///< there is nothing to start without it
  WindowContent content_;
  bool isWorthAWindow_ = false;
  bool isWaiting_ = false;
  std::string reason_;
  bool isWorthRetrying_ = true;
};

}  // namespace quillory::window
