#include "packager/commands/named_key.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::madeKey;
using testing::openssl;
using testing::TempDir;
using testing::writeFile;

class NamedKey : public ::testing::Test {
 protected:
  NamedKey() {
    config_.file = "quillory.toml";
    config_.folder = dir_.str();
    config_.signing.key = "key.pem";
    config_.places["signing.key"] = {"quillory.toml", 8};
  }

  std::string errorOf() const {
    try {
      namedKey(config_);
    } catch (const RejectedInput& e) {
      EXPECT_EQ(e.findings().size(), 1u);
      return asText(e.findings().at(0));
    }
    return "";
  }

  TempDir dir_;
  const std::string prefix_ = "quillory.toml:8: error: " + dir_ / "key.pem" + ": ";
  Config config_;
};

TEST_F(NamedKey, IsReadFromTheFolderOfTheConfiguration) {
  fs::copy_file(madeKey(), dir_ / "key.pem");
  EXPECT_EQ(namedKey(config_).modulusBytes(), 256);
}

TEST_F(NamedKey, IsRefusedAtItsLineWithTheWayOut) {
  EXPECT_EQ(errorOf(), prefix_ +
                           "cannot be opened: No such file or directory [signing-key]\n"
                           "  -> make a key with: quillory-pack keygen");
  writeFile(dir_ / "key.pem", "text");
  EXPECT_EQ(errorOf(), prefix_ +
                           "is not a key in PEM format [signing-key]\n"
                           "  -> make a key with: quillory-pack keygen");
  openssl(
      {"rsa", "-in", madeKey(), "-aes128", "-passout", "pass:secret", "-out", dir_ / "key.pem"});
  EXPECT_EQ(errorOf(), prefix_ +
                           "the key is encrypted, and a pass phrase is not asked for "
                           "[signing-key]\n  -> decrypt it into a file that only you can read: "
                           "openssl rsa -in " +
                           dir_ / "key.pem" + " -out plain.pem");
}

}  // namespace
}  // namespace quillory::pack
