// A window server of a test's own, and what can be seen on its screen.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/harness/child_process.h"

namespace quillory::testing {

/// The first line of a server's standard output, on which it says where it is reached; "" when
/// there is none within 20 seconds.
std::string firstLineOf(const BackgroundChild& process);

/// Xvfb on a display number that it chose itself: a black screen of 1024 x 768 pixels, no window
/// manager. Ends with the object.
class XServer {
 public:
  XServer();
  /// ":7"
  std::string display() const { return display_; }
  /// As a hand would, in pixels from the upper left corner. Throws where that fails.
  void moveMouse(int x, int y) const;
  void click(int x, int y) const;
  /// How many of the windows that a person could choose among have this name.
  int windowsNamed(const std::string& name) const;

 private:
  void mouse(int x, int y, const std::vector<std::string>& then) const;

  BackgroundChild process_;
  std::string display_;
};

/// Where a window is, from the upper left corner of the screen.
struct WindowAt {
  int x, y, width, height;
  bool operator==(const WindowAt&) const = default;
};
void PrintTo(const WindowAt& window, std::ostream* out);

/// Pixels as 0xRRGGBB, rows from the top.
class Picture {
 public:
  Picture(int width, int height);
  int width() const { return width_; }
  int height() const { return height_; }
  std::uint32_t& at(int x, int y);
  std::uint32_t at(int x, int y) const;
  bool operator==(const Picture&) const = default;

 private:
  int width_, height_;
  std::vector<std::uint32_t> pixels_;
};

/// A client of the server.
class Screen {
 public:
  explicit Screen(const XServer& server);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  /// All windows that are on the screen, the topmost last.
  std::vector<WindowAt> shownWindows() const;
  /// What a part of the screen shows.
  Picture grab(const WindowAt& part) const;
  /// Whether there are letters in a part of the screen: something that is nearly black.
  bool hasInk(const WindowAt& part) const;

  /// Puts a plain window there, or takes the latest one away.
  void cover(const WindowAt& part);
  void uncover();

 private:
  struct Connection;
  std::unique_ptr<Connection> connection_;
};

}  // namespace quillory::testing
