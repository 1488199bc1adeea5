#include "packager/keys/public_key.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

using testing::madeKey;
using testing::openssl;
using testing::TempDir;

TEST(PublicKey, ComesFromEitherHalf) {
  TempDir dir;
  openssl({"rsa", "-in", madeKey(), "-pubout", "-out", dir / "public.pem"});
  EXPECT_EQ(PublicKey::load(dir / "public.pem").fingerprint(),
            PublicKey::load(madeKey()).fingerprint());
  EXPECT_THROW(PublicKey::fromHex("00ff", "test"), PackError);
  EXPECT_THROW(PublicKey::fromHex("", "test"), PackError);
}

}  // namespace
}  // namespace quillory::pack
