#include "ui/splash.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

#include "support/log.h"
#include "support/platform.h"
#include "ui/progress_tiles.h"
#include "ui/splash_state.h"

namespace quillory::splash {
namespace {

constexpr int kMaxFrames = 10;

// Written by the thread that calls the operations, read by the main thread when it draws.
std::atomic<int> imageWidth{300};
std::atomic<int> imageHeight{300};

// The animation step belongs to the main thread once the window is drawn.
std::atomic<int> maxFrames{0};
int currentFrame = 0;

// Written and read by one thread at a time: by the one that calls the operations, and by the main
// thread in cleanup(), for which that one waits.
void* redrawer = nullptr;
void* redrawThread = nullptr;

// To standard output alone, at once, so that it keeps its place among the lines of the log.
__attribute__((format(printf, 1, 2))) void print(const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  std::vprintf(format, values);
  va_end(values);
  std::fflush(stdout);
}

int truncated(double pixels) {
  return static_cast<int>(std::clamp(pixels, 0.0, static_cast<double>(INT_MAX)));
}

// Neither the picture nor the margin is known to be small.
int withMargins(int pixels, int more) {
  const std::int64_t sum = std::int64_t{pixels} + 2 * std::int64_t{splashBuffer} + more;
  return static_cast<int>(std::clamp<std::int64_t>(sum, INT_MIN, INT_MAX));
}

void stopRedrawing() {
  if (redrawThread == nullptr) return;
  platformCalls.window.cancelRedrawThread(redrawThread);
  redrawThread = nullptr;
}

void startRedrawing() {
  if (redrawer == nullptr) redrawer = platformCalls.window.makeRedrawer();
  redrawThread = platformCalls.window.startRedrawThread(redrawer);
}

int clampedProgress(int value) {
  if (value < kProgressHidden) return 0;
  return std::min(value, 100);
}

void cleanupOnMainThread() {
  logToSystem("Synced call to splash.cleanup");
  hideSplash();
  stopRedrawing();
  platformCalls.window.closeWindow();
}

void appendTiles(std::vector<TileAt>& tiles, Tile tile, int from, int end, int step) {
  for (int x = from; x < end; x += step) tiles.push_back({tile, x});
}

}  // namespace

std::atomic<int> progressPercent{kProgressHidden};
std::atomic<int> splashBuffer{0};

void init() {
  // A line each: whoever reads standard output finds every message at the start of one.
  print("[Splash] Initing splash...\n");
  print("[Splash] Loading images...\n");
  platformCalls.window.createWindow(imageWidth, imageHeight);
  maxFrames = kMaxFrames;
}

void configureSplash(const char* path) {
  const PictureSize size = platformCalls.window.loadPicture(path);
  imageWidth = truncated(size.width);
  imageHeight = truncated(size.height);
  setFrameSizeWithoutBar();
  print("[Splash] configureSplash with URL %s\n", path);
  logToSystem("Image Size: %.0f : %.0f", size.width, size.height);
}

void showSplash() {
  logToSystem("ShowSplash");
  platformCalls.window.showWindow();
}

void setProgress(int value) {
  const int progress = clampedProgress(value);
  if (progress == progressPercent) return;
  if (progressPercent == kProgressHidden) setFrameSizeWithBar();
  if (progress == kProgressHidden) setFrameSizeWithoutBar();
  stopRedrawing();
  if (progress == kProgressIndefinite) startRedrawing();
  progressPercent = progress;
  platformCalls.window.requestRedraw();
}

void hideSplash() {
  logToSystem("HideSplash");
  platformCalls.window.takeOffScreen();
}

void cleanup() {
  logToSystem("Called splash.cleanup");
  platformCalls.window.runOnMainThread(cleanupOnMainThread);
}

void setSplashBuffer(int pixels) { splashBuffer = pixels; }

void setFrameSize(int width, int height) {
  const Frame old = platformCalls.window.windowFrame();
  const Frame frame = {.x = old.x - (width - old.width) * 0.5,
                       .y = old.y - (height - old.height) * 0.5,
                       .width = static_cast<double>(width),
                       .height = static_cast<double>(height)};
  print("[Splash] Resizing to %d %d\n", width, height);
  platformCalls.window.setWindowFrame(frame);
}

void setFrameSizeWithoutBar() {
  setFrameSize(withMargins(imageWidth, 0), withMargins(imageHeight, 0));
}

void setFrameSizeWithBar() {
  setFrameSize(withMargins(imageWidth, 0), withMargins(imageHeight, kTileHeight));
}

int progress() { return progressPercent; }

std::vector<TileAt> layoutPercentBar(int percent, int viewWidth) {
  std::vector<TileAt> tiles;
  // Neighbours overlap by one pixel.
  constexpr int kStep = kFillTileWidth - 1;
  const std::int64_t hundredths = std::int64_t{percent} * viewWidth;
  const int boundary = static_cast<int>(hundredths / 100);
  if (hundredths > 99) appendTiles(tiles, Tile::kFill, 0, boundary, kStep);
  appendTiles(tiles, Tile::kTrack, boundary, viewWidth, kStep);
  return tiles;
}

std::vector<TileAt> layoutStripes(int frame, int frames, int viewWidth) {
  std::vector<TileAt> tiles;
  appendTiles(tiles, Tile::kStripes, frame - frames, viewWidth, kStripesTileWidth);
  return tiles;
}

Drawing nextDrawing(int viewWidth, int viewHeight) {
  Drawing drawing = {.pictureX = (viewWidth - imageWidth) / 2,
                     .pictureY = viewHeight - imageHeight - splashBuffer,
                     .tiles = {}};
  const int percent = progressPercent;
  if (percent == kProgressIndefinite) {
    // Eleven steps for a pattern of ten pixels: the jump back shows, and is meant to.
    currentFrame = currentFrame < maxFrames ? currentFrame + 1 : 0;
    drawing.tiles = layoutStripes(currentFrame, maxFrames, viewWidth);
  } else if (percent >= 0) {
    drawing.tiles = layoutPercentBar(percent, viewWidth);
  }
  return drawing;
}

}  // namespace quillory::splash
