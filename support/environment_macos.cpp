#include <crt_externs.h>

#include "support/strings.h"

namespace quillory {

// `environ` itself is for the main executable only; this works from a library as well.
char** getEnvP() { return *_NSGetEnviron(); }

}  // namespace quillory
