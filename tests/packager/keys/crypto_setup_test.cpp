#include "packager/keys/crypto_setup.h"

#include <gtest/gtest.h>
#include <tomcrypt.h>

namespace quillory::pack {
namespace {

TEST(SetUpCrypto, RegistersWhatSigningLooksUpAnyNumberOfTimes) {
  setUpCrypto();
  setUpCrypto();
  EXPECT_GE(find_hash("mixed"), 0);
  EXPECT_GE(find_prng(kSystemRandom), 0);
  EXPECT_GE(find_prng("chacha20"), 0);
  EXPECT_NE(ltc_mp.name, nullptr) << "without it there are no large numbers";
}

}  // namespace
}  // namespace quillory::pack
