#include <sys/mman.h>

#include <cstdlib>

#include "lzma/large_blocks.h"

namespace quillory {
namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

void* allocate(void*, std::size_t count, std::size_t size) {
  std::size_t bytes;
  if (__builtin_mul_overflow(count, size, &bytes)) return nullptr;
  if (bytes < kLargePage) return std::malloc(bytes);
  if (bytes > SIZE_MAX - kLargePage) return nullptr;
  const std::size_t pages = (bytes + kLargePage - 1) / kLargePage;
  void* block = std::aligned_alloc(kLargePage, pages * kLargePage);
  // A kernel that has none gives the usual ones.
  if (block != nullptr) madvise(block, pages * kLargePage, MADV_HUGEPAGE);
  return block;
}

void release(void*, void* block) { std::free(block); }

}  // namespace

const lzma_allocator* largeBlocks() {
  static constexpr lzma_allocator kAllocator = {allocate, release, nullptr};
  return &kAllocator;
}

}  // namespace quillory
