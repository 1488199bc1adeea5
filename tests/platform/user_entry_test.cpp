#include "platform/gnustep/user_entry.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <string>

namespace quillory::platform {
namespace {

constexpr uid_t kUnknown = 54321;

struct Entry {
  std::array<char, 1024> buffer;
  passwd entry = {};
  passwd* result = nullptr;
};

// Nobody with this number is in the database; in a process of its own, which then keeps it.
int statusAsUnknownUser(int (*look)()) {
  int status = -1;
  EXPECT_EXIT(
      {
        if (seteuid(kUnknown) != 0) _exit(100);
        provideUserEntry();
        _exit(look());
      },
      [&status](int ended) {
        status = WEXITSTATUS(ended);
        return WIFEXITED(ended);
      },
      "");
  return status;
}

class ProvideUserEntry : public ::testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "needs to be another user";
    if (getpwuid(kUnknown) != nullptr) GTEST_SKIP() << "that user is known here";
  }
};

TEST_F(ProvideUserEntry, MakesOneUpForAnUnknownUser) {
  EXPECT_EQ(statusAsUnknownUser([] {
              Entry found;
              if (getpwuid_r(kUnknown, &found.entry, found.buffer.data(), found.buffer.size(),
                             &found.result) != 0)
                return 1;
              if (found.result != &found.entry) return 2;
              if (found.entry.pw_name != std::string("user-54321")) return 3;
              if (found.entry.pw_dir != std::string("/nonexistent")) return 4;
              return found.entry.pw_uid == kUnknown && *found.entry.pw_shell == '\0' ? 0 : 5;
            }),
            0);
}

TEST_F(ProvideUserEntry, FindsItByItsNameToo) {
  EXPECT_EQ(statusAsUnknownUser([] {
              Entry found;
              getpwnam_r("user-54321", &found.entry, found.buffer.data(), found.buffer.size(),
                         &found.result);
              return found.result != nullptr && found.entry.pw_uid == kUnknown ? 0 : 1;
            }),
            0);
}

TEST_F(ProvideUserEntry, TellsTheTruthToOurOwnCode) {
  EXPECT_EQ(statusAsUnknownUser([] { return getpwuid(kUnknown) == nullptr ? 0 : 1; }), 0);
}

TEST_F(ProvideUserEntry, AsksForALargerBufferAsTheSystemDoes) {
  EXPECT_EQ(statusAsUnknownUser([] {
              Entry found;
              return getpwuid_r(kUnknown, &found.entry, found.buffer.data(), 12, &found.result) ==
                             ERANGE
                         ? 0
                         : 1;
            }),
            0);
}

TEST_F(ProvideUserEntry, LeavesOtherUsersToTheDatabase) {
  EXPECT_EQ(statusAsUnknownUser([] {
              Entry found;
              getpwuid_r(0, &found.entry, found.buffer.data(), found.buffer.size(), &found.result);
              if (found.result == nullptr || found.entry.pw_uid != 0) return 1;
              getpwuid_r(kUnknown + 1, &found.entry, found.buffer.data(), found.buffer.size(),
                         &found.result);
              return found.result == nullptr ? 0 : 2;
            }),
            0);
}

TEST(ProvideUserEntryOfAKnownUser, ChangesNothing) {
  if (getpwuid(geteuid()) == nullptr) GTEST_SKIP() << "this user is not known";
  provideUserEntry();
  Entry found;
  getpwuid_r(geteuid(), &found.entry, found.buffer.data(), found.buffer.size(), &found.result);
  ASSERT_NE(found.result, nullptr);
  EXPECT_EQ(found.entry.pw_name, std::string(getpwuid(geteuid())->pw_name));
}

}  // namespace
}  // namespace quillory::platform
