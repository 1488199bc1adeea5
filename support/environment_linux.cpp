#include <unistd.h>

#include "support/strings.h"

namespace quillory {

char** getEnvP() { return environ; }

}  // namespace quillory
