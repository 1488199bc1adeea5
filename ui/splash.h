// The splash window: its state, sizes and animation, without a platform call. What is to be done on
// a screen goes through the `window` of support/platform.h; Cocoa carries it out on the main
// thread, whatever thread called. Without a display the state changes all the same and nothing is
// shown.
//
// One splash a process, and nothing reports a failure: a missing picture is one of size 0 x 0, and
// what is called before init() acts on no window.
#pragma once
#include <vector>

#include "support/platform.h"

namespace quillory::splash {

/// States of the bar. 0 to 100 is a percentage; any other negative value draws no bar.
inline constexpr int kProgressHidden = -100;
inline constexpr int kProgressIndefinite = -1;

/// Makes the window, not yet shown: a 300 x 300 area without a bar.
void init();

/// Loads the picture and gives the window its size (whole pixels, plus the margin, no bar).
void configureSplash(const char* path);

/// Puts the window in the middle of the screen, above all others.
void showSplash();

/// Shows the bar in a state; more than 100 becomes 100, less than -100 becomes 0. Any thread.
void setProgress(int value);

/// Takes the window off the screen; it can be shown again.
void hideSplash();

/// Ends the splash for good: returns when the window is off the screen and closed.
void cleanup();

/// Margin around the picture on every side, in pixels.
void setSplashBuffer(int pixels);

/// Resizes the window about its centre.
void setFrameSize(int width, int height);
/// The same, to the size of the picture with its margin, and with the bar below it.
void setFrameSizeWithoutBar();
void setFrameSizeWithBar();

/// The bar's state as setProgress() stored it.
int progress();

enum class Tile { kFill, kTrack, kStripes };

struct TileAt {
  Tile tile;
  int x;
  bool operator==(const TileAt&) const = default;
};

/// Tiles along the bottom of a view, in painting order: fill first, so that the track covers the
/// pixels by which the last fill tile overshoots.
std::vector<TileAt> layoutPercentBar(int percent, int viewWidth);

/// The stripes at an animation step of 0 to `maxFrames`.
std::vector<TileAt> layoutStripes(int frame, int maxFrames, int viewWidth);

/// What the view draws on white: the picture's lower left corner, then the tiles at y = 0.
struct Drawing {
  int pictureX, pictureY;
  std::vector<TileAt> tiles;
};

/// The next drawing of a view; moves the stripes on by one step. Main thread only.
Drawing nextDrawing(int viewWidth, int viewHeight);

}  // namespace quillory::splash
