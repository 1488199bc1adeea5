#include "packager/keys/pem.h"

#include <gtest/gtest.h>

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

class ReadPem : public ::testing::Test {
 protected:
  PemBlock read(const std::string& text) {
    writeFile(dir_ / "key.pem", text);
    return readPem(dir_ / "key.pem");
  }

  // What is wrong with a file, as people read it; "" when nothing is.
  std::string errorOf(const std::string& text) {
    try {
      read(text);
    } catch (const PackError& e) {
      return asText(e.finding());
    }
    return "";
  }

  TempDir dir_;
  const std::string prefix_ = dir_ / "key.pem" + ": error: ";
  const std::string noKey_ =
      prefix_ + "is not a key in PEM format\n  -> make a key with: quillory-pack keygen";
};

TEST_F(ReadPem, GivesTheKindAndTheBytesThatOpensslGives) {
  openssl({"rsa", "-in", madeKey(), "-traditional", "-outform", "DER", "-out", dir_ / "private"});
  const PemBlock privateKey = readPem(madeKey());
  EXPECT_EQ(privateKey.kind, "RSA PRIVATE KEY");
  EXPECT_EQ(privateKey.der, readFile(dir_ / "private"));
  openssl({"rsa", "-in", madeKey(), "-pubout", "-out", dir_ / "public.pem"});
  openssl({"rsa", "-in", madeKey(), "-pubout", "-outform", "DER", "-out", dir_ / "public"});
  const PemBlock publicKey = readPem(dir_ / "public.pem");
  EXPECT_EQ(publicKey.kind, "PUBLIC KEY");
  EXPECT_EQ(publicKey.der, readFile(dir_ / "public"));
}

TEST_F(ReadPem, TakesTheFirstBlockAmongOtherText) {
  const PemBlock block = read(
      "Bag Attributes\n-----BEGIN ONE-----\naGVs\nbG8=\n-----END ONE-----\n"
      "-----BEGIN TWO-----\nd29ybGQ=\n-----END TWO-----\n");
  EXPECT_EQ(block.kind, "ONE");
  EXPECT_EQ(block.der, "hello");
}

TEST_F(ReadPem, TakesLinesOfEveryLengthAndEnding) {
  EXPECT_EQ(read("-----BEGIN K-----\r\naGVs\r\nbG8=\r\n-----END K-----\r\n").der, "hello");
  EXPECT_EQ(read("-----BEGIN K-----aGVsbG8=-----END K-----").der, "hello");
}

TEST_F(ReadPem, SaysWhatHasNoBlock) {
  EXPECT_EQ(errorOf(""), noKey_);
  EXPECT_EQ(errorOf("hello"), noKey_);
  EXPECT_EQ(errorOf("-----END K-----\n"), noKey_);
}

TEST_F(ReadPem, TakesNoBlockThatIsCutBeforeItsEnd) {
  const std::string whole = readFile(madeKey());
  const std::size_t end = whole.find("-----END ");
  for (std::size_t length = 0; length < end + 9; ++length) {
    EXPECT_EQ(errorOf(whole.substr(0, length)), noKey_) << length;
  }
}

TEST_F(ReadPem, SaysThatABlockIsDamaged) {
  EXPECT_EQ(errorOf("-----BEGIN K-----\na\n-----END K-----\n"),
            prefix_ + "the key file is damaged\n  -> restore it from your backup");
}

TEST_F(ReadPem, SaysHowToDecryptAKeyOfEitherForm) {
  const std::string advice =
      "the key is encrypted, and a pass phrase is not asked for\n"
      "  -> decrypt it into a file that only you can read: openssl rsa -in " +
      dir_ / "key.pem" + " -out plain.pem";
  openssl({"rsa", "-in", madeKey(), "-aes128", "-traditional", "-passout", "pass:secret", "-out",
           dir_ / "older"});
  openssl({"pkcs8", "-topk8", "-in", madeKey(), "-passout", "pass:secret", "-out", dir_ / "newer"});
  ASSERT_NE(readFile(dir_ / "older").find("Proc-Type: 4,ENCRYPTED"), std::string::npos);
  ASSERT_NE(readFile(dir_ / "newer").find("BEGIN ENCRYPTED PRIVATE KEY"), std::string::npos);
  EXPECT_EQ(errorOf(readFile(dir_ / "older")), prefix_ + advice);
  EXPECT_EQ(errorOf(readFile(dir_ / "newer")), prefix_ + advice);
}

TEST_F(ReadPem, NamesAFileThatCannotBeRead) {
  try {
    readPem(dir_ / "missing");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()),
              dir_ / "missing" + ": error: cannot be opened: No such file or directory");
  }
}

}  // namespace
}  // namespace quillory::pack
