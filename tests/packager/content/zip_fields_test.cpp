#include "packager/content/zip_fields.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

TEST(ZipFields, HaveTheLeastSignificantByteFirst) {
  std::string bytes;
  put16(bytes, 0x1234);
  put32(bytes, 0xFEDCBA98);
  EXPECT_EQ(bytes, "\x34\x12\x98\xBA\xDC\xFE");
  EXPECT_EQ(at16(bytes, 0), 0x1234u);
  EXPECT_EQ(at32(bytes, 2), 0xFEDCBA98u);
}

}  // namespace
}  // namespace quillory::pack
