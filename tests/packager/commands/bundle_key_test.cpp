#include "packager/commands/bundle_key.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::madeKey;
using testing::openssl;
using testing::TempDir;
using testing::writeFile;

class BundleKey : public ::testing::Test {
 protected:
  BundleKey() {
    config_.file = "quillory.toml";
    config_.folder = dir_.str();
    config_.signing.key = "key.pem";
    config_.places["signing.key"] = {"quillory.toml", 8};
  }

  std::optional<SigningKey> load(bool isUnsigned = false) const {
    said_.str("");
    Reporter reporter(said_, said_, {});
    return bundleKey(config_, isUnsigned, reporter);
  }

  std::string errorOf() const {
    try {
      load();
    } catch (const RejectedInput& e) {
      EXPECT_EQ(e.findings().size(), 1u);
      return asText(e.findings().at(0));
    }
    return "";
  }

  mutable std::ostringstream said_;
  TempDir dir_;
  const std::string prefix_ = "quillory.toml:8: error: " + dir_ / "key.pem" + ": ";
  Config config_;
};

TEST_F(BundleKey, IsReadFromTheFolderOfTheConfiguration) {
  fs::copy_file(madeKey(), dir_ / "key.pem");
  const std::optional<SigningKey> key = load();
  ASSERT_TRUE(key);
  EXPECT_EQ(key->modulusBytes(), 256);
}

TEST_F(BundleKey, IsRefusedAtItsLineWithTheWayOut) {
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

TEST_F(BundleKey, IsNoneOnlyWhereThatIsAskedFor) {
  EXPECT_FALSE(load(true));
  EXPECT_EQ(said_.str(),
            "quillory.toml: warning: the archives are not signed: the launcher accepts whatever "
            "anybody puts in their place [unsigned]\n"
            "  -> make a key with: quillory-pack keygen\n");
  config_.signing.key = "";
  config_.places["signing"] = {"quillory.toml", 7};
  EXPECT_EQ(errorOf(),
            "quillory.toml:7: error: signing.key is missing, and unsigned archives have to be "
            "asked for [unsigned]\n"
            "  -> quillory-pack keygen makes a key; --unsigned packs without one");
}

TEST_F(BundleKey, IsReportedWhenOthersCanReadIt) {
  fs::copy_file(madeKey(), dir_ / "key.pem");
  fs::permissions(dir_ / "key.pem", fs::perms(0600));
  EXPECT_TRUE(load());
  EXPECT_EQ(said_.str(), "");
  fs::permissions(dir_ / "key.pem", fs::perms(0644));
  EXPECT_TRUE(load());
  EXPECT_EQ(said_.str(), "quillory.toml:8: warning: " + dir_ / "key.pem" +
                             " can be read by other people of this machine [key-mode]\n"
                             "  -> chmod 600 " +
                             dir_ / "key.pem" + "\n");
}

}  // namespace
}  // namespace quillory::pack
