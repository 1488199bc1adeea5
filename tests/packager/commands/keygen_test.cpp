#include "packager/commands/keygen.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "packager/keys/public_key.h"
#include "packager/keys/signing_key.h"
#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

TEST(MakeKeyFile, WritesAFileForItsOwnerOnlyAndTellsWhatToKeep) {
  TempDir dir;
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  makeKeyFile(dir / "key.pem", 2048, reporter);
  EXPECT_EQ(testing::modeOf(dir / "key.pem"), 0600u);
  EXPECT_FALSE(isReadableByOthers(dir / "key.pem"));
  EXPECT_EQ(out.str(), "key:         " + dir / "key.pem" + "\nfingerprint: " +
                           PublicKey::load(dir / "key.pem").fingerprint() + "\n");
  EXPECT_NE(err.str().find("Whoever loses it"), std::string::npos);
  EXPECT_EQ(err.str().find("PRIVATE KEY"), std::string::npos);
}

TEST(MakeKeyFile, NeverReplacesAKey) {
  TempDir dir;
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  writeFile(dir / "key.pem", "precious");
  EXPECT_THROW(makeKeyFile(dir / "key.pem", 2048, reporter), PackError);
  EXPECT_EQ(readFile(dir / "key.pem"), "precious");
  fs::create_symlink(dir / "nowhere", dir / "link.pem");
  EXPECT_THROW(makeKeyFile(dir / "link.pem", 2048, reporter), PackError);
}

}  // namespace
}  // namespace quillory::pack
