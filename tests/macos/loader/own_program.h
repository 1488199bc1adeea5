// Which program this process is, for itself and for others.
#pragma once
#include <string>

namespace quillory::loader {

/// Names the image that a loader is to run. Taken out of the environment before the image starts.
inline constexpr const char* kImageVariable = "MACHO_LOADER_IMAGE";

/// The loader's ELF file.
std::string loaderPath();

/// The file that the image takes itself for: the one that it was read from, or the ELF file that
/// carries it.
std::string ownProgram();
void setOwnProgram(const std::string& path);

/// The arguments that the image gets, which it can also ask for.
struct Arguments {
  int count = 0;
  char** list = nullptr;
};
Arguments& ownArguments();

}  // namespace quillory::loader
