#include "packager/keys/public_key.h"

#include <gtest/gtest.h>

#include "packager/keys/signing_key.h"
#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

using testing::madeKey;
using testing::openssl;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

TEST(PublicKey, ComesFromEitherHalf) {
  TempDir dir;
  openssl({"rsa", "-in", madeKey(), "-pubout", "-out", dir / "public.pem"});
  EXPECT_EQ(PublicKey::load(dir / "public.pem").fingerprint(),
            PublicKey::load(madeKey()).fingerprint());
  EXPECT_THROW(PublicKey::fromHex("00ff", "test"), PackError);
  EXPECT_THROW(PublicKey::fromHex("", "test"), PackError);
}

// What is wrong with a key, as people read it; "" when nothing is.
template <typename Make>
std::string errorOf(Make make) {
  try {
    make();
  } catch (const PackError& e) {
    return asText(e.finding());
  }
  return "";
}

TEST(PublicKey, ComesFromEveryFormThatOpensslWrites) {
  TempDir dir;
  openssl({"rsa", "-in", madeKey(), "-RSAPublicKey_out", "-out", dir / "pkcs1.pem"});
  openssl({"pkcs8", "-topk8", "-nocrypt", "-in", madeKey(), "-out", dir / "pkcs8.pem"});
  ASSERT_NE(readFile(dir / "pkcs1.pem").find("BEGIN RSA PUBLIC KEY"), std::string::npos);
  for (const char* name : {"pkcs1.pem", "pkcs8.pem"}) {
    EXPECT_EQ(PublicKey::load(dir / name).modulusBytes(), 256) << name;
  }
  EXPECT_EQ(PublicKey::load(dir / "pkcs8.pem").fingerprint(),
            PublicKey::load(madeKey()).fingerprint());
}

TEST(PublicKey, IsReadFromTheHexadecimalTextOfATail) {
  TempDir dir;
  openssl({"rsa", "-in", madeKey(), "-pubout", "-outform", "DER", "-out", dir / "der"});
  std::string hex = toHex(readFile(dir / "der"));
  EXPECT_EQ(PublicKey::fromHex(hex, "test").fingerprint(),
            PublicKey::load(madeKey()).fingerprint());
  EXPECT_EQ(PublicKey::fromHex(hex, "test").modulusBytes(), 256);
}

TEST(PublicKey, IsWrittenAsTailsHaveItWhateverItWasReadFrom) {
  TempDir dir;
  openssl({"rsa", "-in", madeKey(), "-pubout", "-outform", "DER", "-out", dir / "der"});
  openssl({"rsa", "-in", madeKey(), "-RSAPublicKey_out", "-out", dir / "pkcs1.pem"});
  openssl({"rsa", "-in", madeKey(), "-pubout", "-out", dir / "spki.pem"});
  const std::string expected = toHex(readFile(dir / "der"));
  EXPECT_EQ(PublicKey::load(madeKey()).hex(), expected);
  EXPECT_EQ(PublicKey::load(dir / "pkcs1.pem").hex(), expected);
  EXPECT_EQ(PublicKey::load(dir / "spki.pem").hex(), expected);
}

TEST(PublicKey, CutAnywhereIsNoKey) {
  TempDir dir;
  openssl({"rsa", "-in", madeKey(), "-pubout", "-outform", "DER", "-out", dir / "der"});
  const std::string der = readFile(dir / "der");
  for (std::size_t length = 0; length < der.size(); ++length) {
    EXPECT_EQ(errorOf([&] { PublicKey::fromHex(toHex(der.substr(0, length)), "the tail"); }),
              "the tail: error: holds no RSA public key")
        << length;
  }
}

TEST(PublicKey, NamesTheFileThatHoldsNone) {
  TempDir dir;
  writeFile(dir / "text", "hello");
  EXPECT_EQ(errorOf([&] { PublicKey::load(dir / "text"); }),
            dir / "text" +
                ": error: is not a key in PEM format\n  -> make a key with: quillory-pack keygen");
  writeFile(dir / "damaged", "-----BEGIN PUBLIC KEY-----\nAAAA\n-----END PUBLIC KEY-----\n");
  EXPECT_EQ(errorOf([&] { PublicKey::load(dir / "damaged"); }),
            dir / "damaged" + ": error: holds no RSA public key");
}

TEST(FromHex, DecodesUpToTheFirstPairThatIsNone) {
  EXPECT_EQ(fromHex("00ffA5"), std::string("\0\xff\xa5", 3));
  EXPECT_EQ(fromHex("4142gg43"), "AB");
  EXPECT_EQ(fromHex("414"), "A\x04");
  EXPECT_EQ(fromHex(""), "");
  EXPECT_EQ(fromHex("xy"), "");
}

TEST(Verifies, HoldsForTheWholeSignatureOnly) {
  const SigningKey key = SigningKey::load(madeKey());
  const PublicKey half = PublicKey::fromHex(key.publicHex(), "test");
  const Digest digest{1, 2, 3};
  const std::string signature = key.sign(digest, Salt::kDerived);
  ASSERT_TRUE(half.verifies(signature, digest));
  for (std::size_t length = 0; length < signature.size(); length += 5) {
    EXPECT_FALSE(half.verifies(signature.substr(0, length), digest)) << length;
  }
  EXPECT_FALSE(half.verifies(signature + '\0', digest));
  for (std::size_t at = 0; at < signature.size(); at += 15) {
    std::string changed = signature;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    EXPECT_FALSE(half.verifies(changed, digest)) << at;
  }
  for (std::size_t at = 0; at < digest.size(); ++at) {
    Digest other = digest;
    other[at] ^= 0x80;
    EXPECT_FALSE(half.verifies(signature, other)) << at;
  }
}

}  // namespace
}  // namespace quillory::pack
