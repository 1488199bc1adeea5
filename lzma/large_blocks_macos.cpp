#include "lzma/large_blocks.h"

namespace quillory {

// Whether large pages would help here has never been measured.
const lzma_allocator* largeBlocks() { return nullptr; }

}  // namespace quillory
