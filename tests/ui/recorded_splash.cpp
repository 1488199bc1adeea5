#include "tests/ui/recorded_splash.h"

#include <cstdint>

#include "ui/splash.h"

namespace quillory::splash {
namespace {

int redrawerObject;

void note(const std::string& what) { asked.push_back(what); }

std::string inWords(const Frame& frame) {
  std::string words = "frame";
  for (const double part : {frame.x, frame.y, frame.width, frame.height})
    words += " " + std::to_string(static_cast<int>(part));
  return words;
}

const WindowCalls kRecording = {
    .createWindow =
        [](int width, int height) {
          note("create " + std::to_string(width) + "x" + std::to_string(height));
          windowNow = {0, 0, static_cast<double>(width), static_cast<double>(height)};
        },
    .loadPicture =
        [](const char* path) {
          note(std::string("load ") + path);
          return pictureNow;
        },
    .windowFrame = [] { return windowNow; },
    .setWindowFrame =
        [](Frame frame) {
          note(inWords(frame));
          windowNow = frame;
        },
    .showWindow = [] { note("show"); },
    .takeOffScreen = [] { note("off"); },
    .closeWindow = [] { note("close"); },
    .requestRedraw = [] { note("redraw"); },
    .makeRedrawer = []() -> void* {
      note("redrawer");
      return &redrawerObject;
    },
    .startRedrawThread = [](void* redrawer) -> void* {
      EXPECT_EQ(redrawer, &redrawerObject);
      note("start " + std::to_string(++threadsMade));
      return reinterpret_cast<void*>(static_cast<std::intptr_t>(threadsMade));
    },
    .cancelRedrawThread =
        [](void* thread) {
          note("cancel " + std::to_string(reinterpret_cast<std::intptr_t>(thread)));
        },
    .runOnMainThread =
        [](void (*work)()) {
          note("main{");
          work();
          note("}");
        },
};

}  // namespace

std::vector<std::string> asked;
Frame windowNow;
PictureSize pictureNow;
int threadsMade;

Splash::Splash() : calls_(platformCalls.window, kRecording) {
  pictureNow = {400, 200};
  init();
  configureSplash("p.png");
  windowNow = {100, 100, 400, 200};
  asked.clear();
  threadsMade = 0;
  log_.emplace();
}

Splash::~Splash() {
  setProgress(kProgressHidden);
  setSplashBuffer(0);
}

}  // namespace quillory::splash
