// A test program that is killed in the middle, for own_folder_test.cpp. Prints its folder, starts
// something that goes on without it, and waits:
//
//   abandoning_program session   a process in a session of its own, which its parent has left
//   abandoning_program root      one that knows nothing of the folder but has its root folder there
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

#include "tests/harness/own_folder.h"
#include "tests/harness/private_root.h"

int main(int count, char** arguments) {
  using quillory::testing::PrivateRoot;
  const quillory::testing::TempDir folder;
  quillory::testing::writeFile(folder / "read only/file", "content");
  chmod((folder / "read only").c_str(), 0500);
  std::printf("%s\n", quillory::testing::ownFolder().c_str());
  std::fflush(stdout);
  if (count == 2 && std::string_view(arguments[1]) == "root") {
    PrivateRoot().runAsUser({"env", "-i", "/bin/sleep", "1000"});
  } else {
    quillory::testing::runChild({"setsid", "--fork", "sleep", "1000"});
  }
  pause();
}
