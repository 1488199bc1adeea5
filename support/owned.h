// Owners for what C interfaces hand over: streams closed by fclose(), folders by closedir(), blocks
// released by free().
#pragma once
#include <dirent.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace quillory {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};
using OwnedFolder = std::unique_ptr<DIR, FolderCloser>;

struct HeapFreer {
  void operator()(void* block) const { std::free(block); }
};
using OwnedText = std::unique_ptr<char, HeapFreer>;

/// A block of zeros, to be released by free(). Out of memory ends the process here, so that callers
/// need not check for it.
inline char* allocZeroed(std::size_t size) {
  char* block = static_cast<char*>(std::calloc(size, 1));
  if (block == nullptr) std::abort();
  return block;
}

}  // namespace quillory
