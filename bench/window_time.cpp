// Usage: window_time TITLE SECONDS COMMAND [ARGUMENT]...
//
// Starts the command and waits until a window whose title holds TITLE is shown on the display, for
// SECONDS at most. Prints what passed from the start to that: milliseconds on the clock,
// milliseconds of processor time, and the memory that the process shares with nobody or its part of
// what it does (PSS), in KiB. Then it closes the window as a window manager would, waits for the
// end, and ends with the command's status. What the command prints goes to standard error.
#include <X11/Xlib.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

double millisSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Windows come and go while they are asked.
int passOver(Display*, XErrorEvent*) { return 0; }

std::string textOf(Display* display, Window window, const char* property) {
  Atom type = 0;
  int format = 0;
  unsigned long count = 0, rest = 0;
  unsigned char* data = nullptr;
  std::string text;
  if (XGetWindowProperty(display, window, XInternAtom(display, property, False), 0, 1024, False,
                         AnyPropertyType, &type, &format, &count, &rest, &data) == Success &&
      data != nullptr && format == 8) {
    text.assign(reinterpret_cast<char*>(data), count);
  }
  if (data != nullptr) XFree(data);
  return text;
}

bool isNamed(Display* display, Window window, const std::string& title) {
  return textOf(display, window, "_NET_WM_NAME").find(title) != std::string::npos ||
         textOf(display, window, "WM_NAME").find(title) != std::string::npos;
}

bool isShown(Display* display, Window window) {
  XWindowAttributes attributes;
  return XGetWindowAttributes(display, window, &attributes) != 0 &&
         attributes.map_state == IsViewable;
}

// The window with that title, once it is shown; 0 for none in time.
Window waitForWindow(Display* display, const std::string& title, Clock::time_point limit) {
  while (Clock::now() < limit) {
    while (XPending(display) > 0) {
      XEvent event;
      XNextEvent(display, &event);
      if (event.type == CreateNotify) {
        XSelectInput(display, event.xcreatewindow.window, PropertyChangeMask);
      }
      const Window window = event.type == MapNotify        ? event.xmap.window
                            : event.type == PropertyNotify ? event.xproperty.window
                                                           : 0;
      if (window != 0 && isNamed(display, window, title) && isShown(display, window)) {
        return window;
      }
    }
    pollfd connection{ConnectionNumber(display), POLLIN, 0};
    poll(&connection, 1, 100);
  }
  return 0;
}

void closeWindow(Display* display, Window window) {
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
  XSendEvent(display, window, False, NoEventMask, &event);
  XFlush(display);
}

// Of the process itself, all its threads.
double processorMillis(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string text;
  std::getline(file, text);
  long user = 0, system = 0;
  const std::size_t name = text.rfind(')');
  if (name == std::string::npos ||
      std::sscanf(text.c_str() + name + 1, " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld",
                  &user, &system) != 2) {
    return 0;
  }
  return static_cast<double>(user + system) * 1000.0 / static_cast<double>(sysconf(_SC_CLK_TCK));
}

long sharedMemory(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/smaps_rollup");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("Pss:")) return std::atol(line.c_str() + 4);
  }
  return 0;
}

pid_t start(char** command) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  pid_t process = 0;
  const int error = posix_spawnp(&process, command[0], &actions, &attributes, command, environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return error == 0 ? process : -1;
}

bool hasEnded(pid_t process, Clock::time_point limit) {
  for (;;) {
    if (waitpid(process, nullptr, WNOHANG) != 0) return true;
    if (Clock::now() > limit) return false;
    usleep(5000);
  }
}

// Some applications ask before they end, or do not listen yet.
void end(pid_t process) {
  constexpr auto kPatience = std::chrono::seconds(4);
  if (hasEnded(process, Clock::now() + kPatience)) return;
  kill(-process, SIGTERM);
  if (hasEnded(process, Clock::now() + kPatience)) return;
  kill(-process, SIGKILL);
  waitpid(process, nullptr, 0);
}

}  // namespace

int main(int argc, char** argv) {
  Display* display = argc > 3 ? XOpenDisplay(nullptr) : nullptr;
  if (display == nullptr) {
    std::fprintf(stderr, "usage: window_time TITLE SECONDS COMMAND [ARGUMENT]..., on a display\n");
    return 2;
  }
  XSetErrorHandler(passOver);
  XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);
  XSync(display, False);
  const auto seconds = std::chrono::seconds(std::atoi(argv[2]));
  const Clock::time_point begin = Clock::now();
  const pid_t process = start(argv + 3);
  if (process < 0) {
    std::perror(argv[3]);
    return 1;
  }
  const Window window = waitForWindow(display, argv[1], begin + seconds);
  const double passed = millisSince(begin);
  if (window == 0) {
    std::fprintf(stderr, "window_time: no window \"%s\"\n", argv[1]);
    end(process);
    return 1;
  }
  std::printf("%.1f %.0f %ld\n", passed, processorMillis(process), sharedMemory(process));
  std::fflush(stdout);
  // A window that is closed before its application listens stays.
  usleep(500'000);
  closeWindow(display, window);
  end(process);
  return 0;
}
