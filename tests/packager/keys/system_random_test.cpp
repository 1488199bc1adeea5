#include "packager/keys/system_random.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <set>
#include <string>

#include "packager/keys/signing_key.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

// From here on a system call fails in this process, as in a sandbox that does not know it.
void refuse(std::initializer_list<int> calls) {
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  for (const int call : calls) {
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{std::size(rules), rules};
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) != 0) {
      std::_Exit(99);
    }
  }
}

// Ends the process with 0 when the key is made, with 3 and the reason when it is not.
void makeKeyWithout(std::initializer_list<int> calls) {
  refuse(calls);
  try {
    std::_Exit(SigningKey::generate(1024).modulusBytes() == 128 ? 0 : 1);
  } catch (const PackError& e) {
    std::fprintf(stderr, "%s\n", e.what());
    std::_Exit(3);
  }
}

// The same for a signature with a random salt.
void signWithout(std::initializer_list<int> calls) {
  const SigningKey key = SigningKey::generate(2048);
  refuse(calls);
  try {
    key.sign({}, Salt::kRandom);
    std::_Exit(0);
  } catch (const PackError& e) {
    std::fprintf(stderr, "%s\n", e.what());
    std::_Exit(3);
  }
}

TEST(FillWithSystemRandom, FillsEveryByteAnew) {
  std::set<std::string> seen;
  for (int i = 0; i < 10; ++i) {
    std::string bytes(4096, '\0');
    ASSERT_TRUE(fillWithSystemRandom(bytes.data(), bytes.size()));
    EXPECT_GT(std::set<char>(bytes.begin(), bytes.end()).size(), 200u);
    EXPECT_NE(bytes.substr(4032), std::string(64, '\0'));
    seen.insert(bytes);
  }
  EXPECT_EQ(seen.size(), 10u);
  EXPECT_TRUE(fillWithSystemRandom(nullptr, 0));
}

TEST(FillWithSystemRandom, NeedsNoFile) {
  EXPECT_EXIT(makeKeyWithout({SYS_open, SYS_openat}), ::testing::ExitedWithCode(0), "");
}

TEST(FillWithSystemRandom, OrThereIsNoKeyAndNoSignature) {
  const char* const reason =
      "the system gives no random numbers, and what is made without them can be guessed";
  EXPECT_EXIT(makeKeyWithout({SYS_getrandom}), ::testing::ExitedWithCode(3), reason);
  EXPECT_EXIT(signWithout({SYS_getrandom}), ::testing::ExitedWithCode(3), reason);
  EXPECT_EXIT(makeKeyWithout({SYS_getrandom, SYS_open, SYS_openat}), ::testing::ExitedWithCode(3),
              reason);
}

}  // namespace
}  // namespace quillory::pack
