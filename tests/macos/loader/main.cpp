// Runs a Mach-O executable of this project in a process of this machine:
//
//     macho_loader IMAGE ARGUMENT...
//
// A copy of the program with an image appended to it is that image's program: it takes the
// arguments as they are. MACHO_LOADER_SLIDE, a number, says how far above its own addresses the
// image is mapped. What keeps an image from running is said on standard error; the status is then
// kLoaderFailed.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "tests/macos/loader/cocoa/stand_ins.h"
#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/fixups.h"
#include "tests/macos/loader/image.h"
#include "tests/macos/loader/image_bytes.h"
#include "tests/macos/loader/imports.h"
#include "tests/macos/loader/load_error.h"
#include "tests/macos/loader/objc/bridge.h"
#include "tests/macos/loader/own_program.h"
#include "tests/macos/loader/thread_locals.h"
#include "tests/macos/loader/unwinding.h"

namespace quillory::loader {
namespace {

using Main = int (*)(int, char**, char**, const char**);
using Initializer = void (*)(int, char**, char**, const char**);

struct Program {
  std::vector<std::uint8_t> bytes;
  int argc;
  char** argv;
};

Program programOf(int argc, char** argv) {
  if (const char* named = std::getenv(kImageVariable)) {
    const std::string path = named;
    unsetenv(kImageVariable);
    setOwnProgram(path);
    return {imageOf(path), argc, argv};
  }
  const std::string own = loaderPath();
  if (auto carried = carriedImage(own); !carried.empty()) {
    setOwnProgram(own);
    return {std::move(carried), argc, argv};
  }
  if (argc < 2) throw LoadError("usage: macho_loader IMAGE ARGUMENT...");
  setOwnProgram(argv[1]);
  return {imageOf(argv[1]), argc - 1, argv + 1};
}

std::optional<std::uint64_t> wantedSlide() {
  const char* const text = std::getenv("MACHO_LOADER_SLIDE");
  if (text == nullptr) return std::nullopt;
  return std::strtoull(text, nullptr, 0);
}

bool isLinkedWith(const Image& image, std::string_view framework) {
  return std::any_of(image.libraries().begin(), image.libraries().end(),
                     [framework](const std::string& name) { return name.ends_with(framework); });
}

void makeReady(const Image& image, char* program) {
  if (isLinkedWith(image, "/Foundation")) startFoundation(program);
  if (isLinkedWith(image, "/AppKit")) startAppKit();
  rebasePointers(image);
  bindSymbols(image, findImport);
  setUpThreadLocals(image);
  if (isLinkedWith(image, "/libobjc.A.dylib")) adoptObjectiveC(image);
  image.protect();
  registerUnwinding(image);
}

void runInitializers(const Image& image, const Program& program, const char** apple) {
  for (const auto& section : image.sectionsOf(kInitializers)) {
    const auto* const first = reinterpret_cast<const Initializer*>(section.data());
    for (std::size_t i = 0; i < section.size() / sizeof(Initializer); ++i)
      first[i](program.argc, program.argv, environ, apple);
  }
}

int run(int argc, char** argv) {
  Program program = programOf(argc, argv);
  // Both live as long as the process.
  ownArguments() = {program.argc, program.argv};
  const auto& image = *new Image(std::move(program.bytes), wantedSlide());
  makeReady(image, program.argc > 0 ? program.argv[0] : argv[0]);
  static const std::string path = "executable_path=" + ownProgram();
  static const char* apple[] = {path.c_str(), nullptr};
  runInitializers(image, program, apple);
  const auto main = reinterpret_cast<Main>(image.entry());
  return main(program.argc, program.argv, environ, apple);
}

}  // namespace
}  // namespace quillory::loader

int main(int argc, char** argv) {
  int status = 0;
  try {
    status = quillory::loader::run(argc, argv);
  } catch (const quillory::loader::LoadError& error) {
    quillory::loader::fail(error.what());
  }
  return status;
}
