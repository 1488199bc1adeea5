#include "support/platform.h"

#include <cstdio>
#include <string_view>
#include <thread>

namespace quillory {
namespace {

const std::thread::id initialThread = std::this_thread::get_id();

void writeToStandardError(const char* message) {
  const char* const end = std::string_view(message).ends_with('\n') ? "" : "\n";
  std::fprintf(stderr, "%s%s", message, end);
  std::fflush(stderr);
}

bool hasNoFileManager(const char* /*from*/, const char* /*to*/, std::string& error) {
  error = "there is no file manager on this system";
  return false;
}

}  // namespace

constinit Platform platformCalls = {
    .systemLog = writeToStandardError,
    .moveItem = hasNoFileManager,
    .downloadFile = nullptr,
    .bundles = {.createBundle = [](const char*) -> void* { return nullptr; },
                .loadExecutable = [](void*) { return false; }},
    .isMainThread = [] { return std::this_thread::get_id() == initialThread; },
    .requestedUrl = nullptr,
    .window = {.createWindow = [](int, int) {},
               .loadPicture = [](const char*) { return splash::PictureSize{}; },
               .windowFrame = [] { return splash::Frame{}; },
               .setWindowFrame = [](splash::Frame) {},
               .showWindow = [] {},
               .takeOffScreen = [] {},
               .closeWindow = [] {},
               .requestRedraw = [] {},
               .makeRedrawer = []() -> void* { return nullptr; },
               .startRedrawThread = [](void*) -> void* { return nullptr; },
               .cancelRedrawThread = [](void*) {},
               .runOnMainThread = [](void (*work)()) { work(); }},
    .notice = {.show = [](const char*) {}, .takeDown = [] {}},
    .presence = {.leaveDock = [] {},
                 .beginWork = [](const char*) -> void* { return nullptr; },
                 .endWork = [](void*) {}},
    .failure = {.mayShow = [] { return false; }, .show = [](const FailureNotice&) {}},
};

}  // namespace quillory
