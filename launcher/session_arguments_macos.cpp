#include "launcher/session_arguments.h"

namespace quillory {

int withoutArgumentsOfTheSystem(int count, char** arguments) {
  return withoutSessionArguments(count, arguments);
}

// Threads beside the main one get 512 KiB.
std::size_t runThreadStackBytes() { return std::size_t{8} << 20; }

}  // namespace quillory
