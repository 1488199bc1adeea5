#include "launcher/session_arguments.h"

namespace quillory {

int withoutArgumentsOfTheSystem(int count, char**) { return count; }

// The limit of the stack (ulimit -s) counts for every thread.
std::size_t runThreadStackBytes() { return 0; }

}  // namespace quillory
