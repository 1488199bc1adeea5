// What elevation puts into the temporary folder of all users, and what others put there first.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/e2e/elevation_fixture.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;

/// What stands in /tmp before the start.
class SharedTemporaryFolder : public Elevation {
 protected:
  void SetUp() override {
    Elevation::SetUp();
    if (IsSkipped()) return;
    useRecorder();
    writeFile(precious_(), "precious");
    EXPECT_EQ(chown(precious_().c_str(), PrivateRoot::kUser, PrivateRoot::kUser), 0);
  }
  std::string precious_() const { return at("/home/user/precious"); }

  void plant(const std::string& path, const std::string& target, uid_t owner) {
    fs::create_symlink(target, at(path));
    EXPECT_EQ(lchown(at(path).c_str(), owner, owner), 0);
  }
  void expectUnwritable(const std::string& name) {
    const ChildResult result = start();
    EXPECT_EQ(result.exitStatus, 1) << result.out;
    EXPECT_THAT(result.out, HasSubstr("Unable to extract archive file " + name + " ("));
    EXPECT_THAT(result.out, HasSubstr("), unable to open file for writing\n"));
    EXPECT_EQ(prompts(), 0);
  }
};

TEST_F(SharedTemporaryFolder, GetsTheToolAndThePictureAndRunsNeither) {
  Tail tail = forAllUsers();
  const std::string tool = fileEntry("lzma64", readFile(lzma64UnderTest()));
  ASSERT_EQ(tail.entries.compare(0, tool.size(), tool), 0);
  tail.entries.replace(0, tool.size(), fileEntry("lzma64", "#!/bin/sh\ntouch /records/was-run\n"));
  makeBundle(tail);
  useRecorder();
  start();
  EXPECT_TRUE(fs::exists(at("/tmp/lzma64")));
  EXPECT_EQ(readFile(at("/tmp/nativesplash.png")), readFile(QUILLORY_TEST_PICTURE));
  EXPECT_FALSE(fs::exists(at("/records/was-run")));
}

TEST_F(SharedTemporaryFolder, HasOwnOldFilesReplaced) {
  for (const char* name : {"/tmp/lzma64", "/tmp/nativesplash.png"}) {
    writeFile(at(name), "old");
    ASSERT_EQ(chown(at(name).c_str(), PrivateRoot::kUser, PrivateRoot::kUser), 0);
  }
  EXPECT_EQ(start().exitStatus, 0);
  EXPECT_EQ(prompts(), 1);
  EXPECT_EQ(readFile(at("/tmp/lzma64")), readFile(lzma64UnderTest()));
  EXPECT_EQ(readFile(at("/tmp/nativesplash.png")), readFile(QUILLORY_TEST_PICTURE));
}

TEST_F(SharedTemporaryFolder, HasOwnLinksReplacedAndNotFollowed) {
  plant("/tmp/lzma64", "/home/user/precious", PrivateRoot::kUser);
  plant("/tmp/nativesplash.png", "/home/user/not there", PrivateRoot::kUser);
  EXPECT_EQ(start().exitStatus, 0);
  EXPECT_EQ(prompts(), 1);
  EXPECT_EQ(readFile(precious_()), "precious");
  EXPECT_FALSE(fs::exists(at("/home/user/not there")));
  EXPECT_FALSE(fs::is_symlink(at("/tmp/lzma64")));
  EXPECT_FALSE(fs::is_symlink(at("/tmp/nativesplash.png")));
}

TEST_F(SharedTemporaryFolder, HasForeignLinksNeverFollowed) {
  for (const char* name : {"lzma64", "nativesplash.png"}) {
    SCOPED_TRACE(name);
    const std::string path = std::string("/tmp/") + name;
    plant(path, "/home/user/precious", 1234);
    expectUnwritable(name);
    EXPECT_EQ(readFile(precious_()), "precious");
    EXPECT_TRUE(fs::is_symlink(at(path)));
    fs::remove(at(path));
  }
}

TEST_F(SharedTemporaryFolder, WithAForeignFileThatCannotBeReplacedGivesAnError) {
  for (const char* name : {"lzma64", "nativesplash.png"}) {
    SCOPED_TRACE(name);
    const std::string path = at(std::string("/tmp/") + name);
    writeFile(path, "another user's");
    ASSERT_EQ(chown(path.c_str(), 1234, 1234), 0);
    // Even one that everybody may write to.
    chmod(path.c_str(), 0666);
    expectUnwritable(name);
    EXPECT_EQ(readFile(path), "another user's");
    fs::remove(path);
  }
}

TEST_F(SharedTemporaryFolder, WithAFolderInTheWayGivesAnError) {
  root_->makeUserFolder("/tmp/lzma64");
  expectUnwritable("lzma64");
}

}  // namespace
}  // namespace quillory::testing
