#include "tests/ui/x_server.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <chrono>
#include <ostream>
#include <stdexcept>
#include <thread>

namespace quillory::testing {
namespace {

struct ListFreer {
  void operator()(void* list) const { XFree(list); }
};

struct ImageDestroyer {
  void operator()(XImage* image) const { XDestroyImage(image); }
};

}  // namespace

std::string firstLineOf(const BackgroundChild& process) {
  for (int wait = 0; wait < 2000; ++wait) {
    const std::string output = process.out();
    if (const std::size_t end = output.find('\n'); end != std::string::npos)
      return output.substr(0, end);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return {};
}

// With neither a lock file nor a socket that is a file, it leaves nothing when it is killed.
// Clients find it by the name of its socket that is none.
XServer::XServer()
    : process_({"Xvfb", "-displayfd", "1", "-nolock", "-nolisten", "unix", "-noreset", "-screen",
                "0", "1024x768x24"}),
      display_(":" + firstLineOf(process_)) {}

void XServer::mouse(int x, int y, const std::vector<std::string>& then) const {
  std::vector<std::string> command = {"xdotool", "mousemove", std::to_string(x), std::to_string(y)};
  command.insert(command.end(), then.begin(), then.end());
  ChildOptions options;
  options.environment["DISPLAY"] = display_;
  const ChildResult result = runChild(command, options);
  if (result.exitStatus != 0) throw std::runtime_error("no mouse: " + result.err);
}

void XServer::moveMouse(int x, int y) const { mouse(x, y, {}); }

void XServer::click(int x, int y) const { mouse(x, y, {"click", "1"}); }

int XServer::windowsNamed(const std::string& name) const {
  ChildOptions options;
  options.environment["DISPLAY"] = display_;
  const std::string ids =
      runChild({"xdotool", "search", "--onlyvisible", "--name", "^" + name + "$"}, options).out;
  return static_cast<int>(std::count(ids.begin(), ids.end(), '\n'));
}

void PrintTo(const WindowAt& window, std::ostream* out) {
  *out << window.width << "x" << window.height << "+" << window.x << "+" << window.y;
}

Picture::Picture(int width, int height)
    : width_(width),
      height_(height),
      pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

std::uint32_t& Picture::at(int x, int y) {
  return pixels_.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                    static_cast<std::size_t>(x));
}

std::uint32_t Picture::at(int x, int y) const { return const_cast<Picture*>(this)->at(x, y); }

struct Screen::Connection {
  Display* display = nullptr;
  Window cover = 0;
};

Screen::Screen(const XServer& server) : connection_(std::make_unique<Connection>()) {
  connection_->display = XOpenDisplay(server.display().c_str());
  if (connection_->display == nullptr) throw std::runtime_error("no display " + server.display());
}

Screen::~Screen() { XCloseDisplay(connection_->display); }

std::vector<WindowAt> Screen::shownWindows() const {
  Display* const display = connection_->display;
  Window root = 0;
  Window parent = 0;
  Window* list = nullptr;
  unsigned count = 0;
  // Windows come and go while they are asked about: those of programs that end even now, and Xlib
  // ends a process that asks for one.
  XGrabServer(display);
  const auto handler = XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
  XQueryTree(display, DefaultRootWindow(display), &root, &parent, &list, &count);
  const std::unique_ptr<Window[], ListFreer> windows(list);
  std::vector<WindowAt> shown;
  for (unsigned i = 0; i < count; ++i) {
    XWindowAttributes window;
    if (XGetWindowAttributes(display, windows[i], &window) != 0 && window.map_state == IsViewable &&
        window.c_class == InputOutput)
      shown.push_back({window.x, window.y, window.width + 2 * window.border_width,
                       window.height + 2 * window.border_width});
  }
  XUngrabServer(display);
  XSync(display, False);
  XSetErrorHandler(handler);
  return shown;
}

Picture Screen::grab(const WindowAt& part) const {
  Display* const display = connection_->display;
  const std::unique_ptr<XImage, ImageDestroyer> image(XGetImage(
      display, DefaultRootWindow(display), part.x, part.y, static_cast<unsigned>(part.width),
      static_cast<unsigned>(part.height), AllPlanes, ZPixmap));
  Picture picture(part.width, part.height);
  for (int y = 0; y < part.height; ++y)
    for (int x = 0; x < part.width; ++x)
      picture.at(x, y) = static_cast<std::uint32_t>(XGetPixel(image.get(), x, y)) & 0xFFFFFFU;
  return picture;
}

bool Screen::hasInk(const WindowAt& part) const {
  constexpr std::uint32_t kDark = 0x60;
  const Picture picture = grab(part);
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x)
      if ((picture.at(x, y) & 0xFF) < kDark) return true;
  return false;
}

void Screen::cover(const WindowAt& part) {
  Display* const display = connection_->display;
  XSetWindowAttributes attributes = {};
  attributes.override_redirect = True;
  attributes.background_pixel = 0x00FF00;
  connection_->cover = XCreateWindow(
      display, DefaultRootWindow(display), part.x, part.y, static_cast<unsigned>(part.width),
      static_cast<unsigned>(part.height), 0, CopyFromParent, InputOutput, CopyFromParent,
      CWOverrideRedirect | CWBackPixel, &attributes);
  XMapRaised(display, connection_->cover);
  XSync(display, False);
}

void Screen::uncover() {
  XDestroyWindow(connection_->display, connection_->cover);
  XSync(connection_->display, False);
}

}  // namespace quillory::testing
