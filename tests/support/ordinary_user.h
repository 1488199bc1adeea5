// Root may do everything to files, so that what an ordinary user cannot do needs this to be tested.
#pragma once
#include <gtest/gtest.h>
#include <unistd.h>

namespace quillory::testing {

/// While it lives, files are reached with the rights of an ordinary user. Declare it before the
/// TempDir, which then belongs to that user. A shell that is started takes the old rights back.
class AsOrdinaryUser {
 public:
  AsOrdinaryUser() {
    if (isRoot_) {
      EXPECT_EQ(seteuid(kNobody), 0);
    }
  }
  ~AsOrdinaryUser() {
    if (isRoot_) {
      EXPECT_EQ(seteuid(0), 0);
    }
  }
  AsOrdinaryUser(const AsOrdinaryUser&) = delete;
  AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  const bool isRoot_ = geteuid() == 0;
};

}  // namespace quillory::testing
