// What the window would show, as lines on a console without one.
#pragma once
#include <functional>
#include <string>

#include "update_window/update_story.h"

namespace quillory::window {

/// Tells what is new for somebody who reads lines: headings, texts, and of what is being loaded
/// each tenth.
class TextDisplay {
 public:
  using Write = std::function<void(const std::string& line)>;
  explicit TextDisplay(Write write) : write_(std::move(write)) {}

  void show(const WindowContent& content);

 private:
  Write write_;
  std::string heading_;
  std::string text_;
  int tenth_ = 0;
};

}  // namespace quillory::window
