#include "tests/macos/loader/own_program.h"

#include <filesystem>

namespace quillory::loader {
namespace {

std::string& program() {
  static std::string path;
  return path;
}

}  // namespace

std::string loaderPath() { return std::filesystem::read_symlink("/proc/self/exe"); }

std::string ownProgram() { return program(); }

Arguments& ownArguments() {
  static Arguments arguments;
  return arguments;
}

void setOwnProgram(const std::string& path) {
  program() = std::filesystem::absolute(path).string();
}

}  // namespace quillory::loader
