#include "packager/writing/signature_block.h"

#include <gtest/gtest.h>

#include "formats/signed_bytes.h"
#include "tests/harness/records.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

using testing::madeKey;
using testing::records;

TEST(WriteSignatureBlock, SignsWhatStandsInFrontOfIt) {
  const SigningKey key = SigningKey::load(madeKey());
  std::string bytes = records({"signed"});
  MixedDigest digest;
  digest.update(bytes);
  StringSink block;
  writeSignatureBlock(block, bytes.size(), digest.finish(), key, Salt::kRandom);
  const std::string head = records({"0", "qyArcSpBlock_DigitalSignature1", "1", "7"});
  EXPECT_EQ(block.bytes().substr(0, head.size()), head);
  EXPECT_EQ(block.bytes().size(), head.size() + 512 + 1);
  bytes += block.bytes();
  EXPECT_EQ(keysThatSigned(splitSignatureBlocks(bytes, 1), {key.publicHex()}).size(), 1u);
  bytes[0] = 'S';
  EXPECT_TRUE(keysThatSigned(splitSignatureBlocks(bytes, 1), {key.publicHex()}).empty());
}

}  // namespace
}  // namespace quillory::pack
