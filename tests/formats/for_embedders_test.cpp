#include "formats/for_embedders.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "formats/text_encodings.h"
#include "support/owned.h"
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

std::string decodedBase64(std::string_view text) {
  std::size_t length = 0;
  const OwnedText bytes(base64_decode(text.data(), text.size(), &length));
  return bytes ? std::string(bytes.get(), length) : "nothing";
}

TEST(Base64Cleanup, LetsTheTableBeBuiltAgain) {
  base64_cleanup();
  EXPECT_EQ(decodedBase64("TWFu"), "Man");
  build_decoding_table();
  EXPECT_EQ(decodedBase64("TWFu"), "Man");
  base64_cleanup();
  base64_cleanup();
  EXPECT_EQ(decodedBase64("TWFu"), "Man");
}

}  // namespace
}  // namespace quillory
