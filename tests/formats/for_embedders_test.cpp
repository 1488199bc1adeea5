#include "formats/for_embedders.h"

#include <gtest/gtest.h>

#include "tests/harness/captured_log.h"

// KeccakF() and crypto_hash() are tested with the hash, in keccak_test.cpp.
namespace quillory {
namespace {

using testing::CapturedLog;

TEST(FnvHash, IsFnv1aOf32Bits) {
  CapturedLog log;
  EXPECT_EQ(fnvHash("a", 1), 0xE40C292CU);
  EXPECT_EQ(fnvHash("foobar", 6), 0xBF9CF968U);
}

TEST(FnvHash, IsTheOffsetBasisForNoBytes) {
  CapturedLog log;
  EXPECT_EQ(fnvHash("a", 0), 0x811C9DC5U);
  EXPECT_EQ(fnvHash("a", -1), 0x811C9DC5U);
  EXPECT_EQ(log.text(), "");
}

TEST(FnvHash, LogsEveryStepInSignedNumbers) {
  CapturedLog log;
  EXPECT_EQ(fnvHash("a\xFF", 2), 0xD225D729U);
  EXPECT_EQ(log.text(), "[0] 97 -468965076\n[1] -1 -769272023\n");
}

}  // namespace
}  // namespace quillory
