// Owners for what C interfaces hand over: streams closed by fclose(), blocks released by free().
#pragma once
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace quillory {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

struct HeapFreer {
  void operator()(void* block) const { std::free(block); }
};
using OwnedText = std::unique_ptr<char, HeapFreer>;

}  // namespace quillory
