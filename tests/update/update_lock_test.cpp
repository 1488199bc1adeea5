#include "update/update_lock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

using update::UpdateLock;

TEST(UpdateLock, IsHeldByOneAtATime) {
  const TempDir folder;
  {
    UpdateLock first;
    EXPECT_EQ(first.take(folder.str()), UpdateLock::Taken::kYes);
    UpdateLock second;
    EXPECT_EQ(second.take(folder.str()), UpdateLock::Taken::kBusy);
  }
  UpdateLock third;
  EXPECT_EQ(third.take(folder.str()), UpdateLock::Taken::kYes);
}

TEST(UpdateLock, GoesWithItsHolder) {
  const TempDir folder;
  const pid_t child = fork();
  if (child == 0) {
    UpdateLock lock;
    const bool isTaken = lock.take(folder.str()) == UpdateLock::Taken::kYes;
    kill(getpid(), isTaken ? SIGKILL : SIGTERM);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  UpdateLock lock;
  EXPECT_EQ(lock.take(folder.str()), UpdateLock::Taken::kYes);
}

TEST(UpdateLock, CannotBeHadWithoutAFolder) {
  const TempDir folder;
  UpdateLock lock;
  EXPECT_EQ(lock.take(folder / "none"), UpdateLock::Taken::kNot);
}

}  // namespace
}  // namespace quillory::testing
