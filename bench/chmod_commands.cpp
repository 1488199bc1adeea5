// Runs the command of the launcher's chmodR755() for each file that is named, and nothing else:
// what those commands cost in themselves. For compare_install.sh.
#include <cstdlib>
#include <string>

int main(int count, char** arguments) {
  int failures = 0;
  for (int i = 1; i < count; ++i) {
    const std::string command = "chmod -R 755 \"" + std::string(arguments[i]) + '"';
    if (std::system(command.c_str()) != 0) ++failures;
  }
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
