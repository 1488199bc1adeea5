// What the platform answers: one table for everything that Cocoa does for the floors below it. The
// launcher installs Cocoa's answers once, at its start (launcher/cocoa_platform.h); without them
// the plain ones stand, which need no Cocoa. A test replaces a member through ScopedReplace.
//
// Clock and processes are no part of it: they are the same everywhere (clock.h, process.h).
#pragma once
#include <string>

namespace quillory {

/// Loading a JRE's bundle. The plain answer: there are no bundles.
struct BundleCalls {
  /// Makes a URL of the folder `path`, logging it, and a bundle of that; null when there is none.
  /// A bundle is never released: that would unload its code.
  void* (*createBundle)(const char* path);
  /// Loads the bundle's executable; true for success without an error object.
  bool (*loadExecutable)(void* bundle);
};

namespace splash {

/// Where the window is: pixels from the lower left corner of the screen; all 0 without a window.
struct Frame {
  double x, y, width, height;
};

/// Size of a picture as its image reports it, in pixels of a 72-dpi screen.
struct PictureSize {
  double width, height;
};

/// What the platform does for the splash (ui/splash.h). Every call is complete when it returns, and
/// may come from any thread; none fails. Handles are the platform's own, null where it has none to
/// give. The plain answer: no window, and what waits for the main thread runs at once.
struct WindowCalls {
  void (*createWindow)(int width, int height);
  /// Size 0 x 0 for a picture that cannot be loaded, which then is none.
  PictureSize (*loadPicture)(const char* path);
  Frame (*windowFrame)();
  void (*setWindowFrame)(Frame frame);
  /// Floating level, centred, in front.
  void (*showWindow)();
  void (*takeOffScreen)();
  void (*closeWindow)();
  void (*requestRedraw)();
  void* (*makeRedrawer)();
  /// A thread that asks for a redraw every 0.03 s until it is cancelled.
  void* (*startRedrawThread)(void* redrawer);
  /// Takes `thread` back; does not wait for its end.
  void (*cancelRedrawThread)(void* thread);
  /// Runs `work` on the main thread and waits for its end.
  void (*runOnMainThread)(void (*work)());
};

}  // namespace splash

/// What people are told while a start waits for minutes. Any thread; none fails. The plain answer:
/// nothing is shown.
struct NoticeCalls {
  /// Shows `text` in a small window, with a button "Quit" that ends the process. Where there is no
  /// display nothing is shown.
  void (*show)(const char* text);
  void (*takeDown)();
};

/// How the desktop treats this process. Any thread; none fails. The plain answer: as it likes.
struct PresenceCalls {
  /// From now on it has no icon in the Dock: another copy of it takes over.
  void (*leaveDock)();
  /// Until endWork() takes the result back the user waits for this process, which the system then
  /// does not slow down. `reason` is for people.
  void* (*beginWork)(const char* reason);
  void (*endWork)(void* work);
};

/// What ends a download that would go on for too long; 0: nothing does.
struct DownloadLimits {
  long long maxBytes = 0;   ///< more than these are no download
  double totalSeconds = 0;  ///< from its beginning to its end
};

/// What the user is told of a start that has failed.
struct FailureNotice {
  std::string sentence{};  ///< what has happened
  std::string cause{};     ///< the words of what has failed, some lines; may be ""
  std::string logFile{};   ///< "" where there is none
  /// How long it stays where nobody moves the mouse.
  int unattendedSeconds = 60;
};

/// Any thread but the main one; none fails. The plain answer: nothing is shown.
struct FailureCalls {
  /// Whether there is a display by the looks of it.
  bool (*mayShow)();
  /// Shows it in a window, with buttons to copy it and to show the log, until that is closed. Where
  /// there is no display nothing is shown.
  void (*show)(const FailureNotice& notice);
};

struct Platform {
  /// A line for the system log. The plain answer: standard error.
  void (*systemLog)(const char* message);
  /// Moves a file or folder to a path that must not exist, across file systems if need be; false
  /// with a text for the log when it cannot. The plain answer: it cannot.
  bool (*moveItem)(const char* from, const char* to, std::string& error);
  /// The transport of formats/downloads.h, whose file tells the outcome; the value says nothing.
  /// Null, as in the plain table: every download fails at once.
  int (*downloadFile)(const char* url, const char* destPath, const DownloadLimits& limits);
  BundleCalls bundles;
  /// The plain answer takes the thread that initialised the program for the main thread.
  bool (*isMainThread)();
  /// The latest URL that the user asked for, borrowed, or null. Null itself, as in the plain table:
  /// nobody listens.
  const char* (*requestedUrl)();
  splash::WindowCalls window;
  NoticeCalls notice;
  PresenceCalls presence;
  FailureCalls failure;
};

/// Written before a second thread starts, and by tests.
extern Platform platformCalls;

}  // namespace quillory
