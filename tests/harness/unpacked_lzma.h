// What an LZMA-alone stream holds.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "lzma/lzma_alone.h"

namespace quillory::testing {

/// By liblzma; a failed expectation where it is no whole stream.
inline std::string unpackedLzma(const std::string& stream) {
  std::string text;
  LzmaCoder coder = LzmaCoder::decoder([&](const unsigned char* data, std::size_t size) {
    text.append(reinterpret_cast<const char*>(data), size);
    return true;
  });
  coder.write(stream.data(), stream.size());
  EXPECT_TRUE(coder.finish()) << coder.error();
  return text;
}

}  // namespace quillory::testing
