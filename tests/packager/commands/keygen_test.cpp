#include "packager/commands/keygen.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "packager/keys/public_key.h"
#include "packager/keys/signing_key.h"
#include "packager/report/findings.h"
#include "support/folder_listing.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"

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

TEST(MakeReserveKeyFiles, WritesThePublicHalfBesideTheKey) {
  TempDir dir;
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  makeReserveKeyFiles(dir / "reserve.pem", 2048, reporter);
  EXPECT_EQ(testing::modeOf(dir / "reserve.pem"), 0600u);
  EXPECT_EQ(readFile(dir / "reserve.public.pem"),
            testing::openssl({"rsa", "-in", dir / "reserve.pem", "-pubout"}).out);
  EXPECT_EQ(out.str(), "reserve key: " + dir / "reserve.pem" +
                           "\npublic half: " + dir / "reserve.public.pem" + "\nfingerprint: " +
                           PublicKey::load(dir / "reserve.public.pem").fingerprint() + "\n");
  EXPECT_NE(err.str().find("delete it here"), std::string::npos);
}

TEST(MakeReserveKeyFiles, ReplacesNeitherOfTheTwo) {
  for (const char* taken : {"reserve.pem", "reserve.public.pem"}) {
    TempDir dir;
    std::ostringstream out, err;
    Reporter reporter(out, err, {});
    writeFile(dir / taken, "precious");
    EXPECT_THROW(makeReserveKeyFiles(dir / "reserve.pem", 2048, reporter), PackError);
    EXPECT_EQ(readFile(dir / taken), "precious");
    EXPECT_EQ(namesIn(dir.str()), std::vector<std::string>{taken});
  }
}

TEST(PublicHalfPath, SaysThatTheFileHoldsThePublicHalf) {
  EXPECT_EQ(publicHalfPath("reserve.pem"), "reserve.public.pem");
  EXPECT_EQ(publicHalfPath("/safe/my.reserve.pem"), "/safe/my.reserve.public.pem");
  EXPECT_EQ(publicHalfPath("keys/reserve"), "keys/reserve.public.pem");
  EXPECT_EQ(publicHalfPath("reserve.key"), "reserve.public.key.pem");
}

}  // namespace
}  // namespace quillory::pack
