// Expected digests are SHA-256, then Keccak-256, of other libraries.
#include "packager/keys/mixed_digest.h"

#include <gtest/gtest.h>

#include "tests/harness/hex.h"

namespace quillory::pack {
namespace {

using testing::hex;

const char kOfNothing[] =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"
    "c5d2460186f7233c927e7db2dcc703c0e500b653ca82273b7bfad8045d85a470";
const char kOfAbc[] =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"
    "4e03657aea45a94fc7d47ba826c8d667c0d1e6e33a64a036ec44f58fa12d6c45";
const char kOfAMillionLetters[] =
    "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"
    "fadae6b49f129bbb812be8407b7b2894f34aecf6dbd1f9b0f0c7e9853098fc96";

std::string digestOf(std::initializer_list<std::string_view> pieces) {
  MixedDigest digest;
  for (const std::string_view piece : pieces) {
    digest.update(piece);
  }
  const Digest finished = digest.finish();
  return hex(finished.data(), finished.size());
}

TEST(MixedDigest, IsOneDigestBehindTheOther) {
  EXPECT_EQ(digestOf({}), kOfNothing);
  EXPECT_EQ(digestOf({"abc"}), kOfAbc);
}

TEST(MixedDigest, IsTheSameInWhateverPiecesTheBytesCome) {
  EXPECT_EQ(digestOf({"a", "b", "c"}), kOfAbc);
  EXPECT_EQ(digestOf({"", "ab", std::string_view(), "c", ""}), kOfAbc);
  const std::string large(999937, 'a'), rest(63, 'a');
  EXPECT_EQ(digestOf({large, rest}), kOfAMillionLetters);
  EXPECT_EQ(digestOf({rest, large}), kOfAMillionLetters);
}

TEST(MixedDigest, IsOfNothingWhenNothingButEmptyPiecesCome) {
  EXPECT_EQ(digestOf({"", std::string_view()}), kOfNothing);
}

}  // namespace
}  // namespace quillory::pack
