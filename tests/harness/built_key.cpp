#include "tests/harness/built_key.h"

namespace quillory::testing {

std::string builtKey() { return QUILLORY_BUILT_KEY; }

}  // namespace quillory::testing
