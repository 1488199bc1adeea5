#include "lzma/large_blocks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

namespace quillory {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

bool isFilled(void* block, std::size_t size) {
  std::memset(block, 0x5a, size);
  return static_cast<unsigned char*>(block)[size - 1] == 0x5a;
}

TEST(LargeBlocks, AreThereInEverySize) {
  const lzma_allocator& blocks = *largeBlocks();
  for (const std::size_t size : {std::size_t{1}, kMebibyte, 2 * kMebibyte - 1, 2 * kMebibyte,
                                 2 * kMebibyte + 1, 64 * kMebibyte}) {
    void* block = blocks.alloc(blocks.opaque, 1, size);
    ASSERT_NE(block, nullptr) << size;
    EXPECT_TRUE(isFilled(block, size));
    blocks.free(blocks.opaque, block);
  }
}

TEST(LargeBlocks, BeginWhereALargePageDoes) {
  const lzma_allocator& blocks = *largeBlocks();
  void* block = blocks.alloc(blocks.opaque, 3, kMebibyte);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % (2 * kMebibyte), 0U);
  EXPECT_TRUE(isFilled(block, 3 * kMebibyte));
  blocks.free(blocks.opaque, block);
}

TEST(LargeBlocks, AreRefusedWhereTheSizeIsNoNumber) {
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
  const lzma_allocator& blocks = *largeBlocks();
  EXPECT_EQ(blocks.alloc(blocks.opaque, 2, kMost / 2 + 1), nullptr);
  EXPECT_EQ(blocks.alloc(blocks.opaque, kMost, kMost), nullptr);
  EXPECT_EQ(blocks.alloc(blocks.opaque, 1, kMost), nullptr);
}

}  // namespace
}  // namespace quillory
