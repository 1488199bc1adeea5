// Memory for the tables of an LZMA encoder: a hundred megabytes that are read here and there, for
// which pages of the usual size are slow.
#pragma once
#include <lzma.h>

namespace quillory {

/// An allocator for lzma_stream, or null where the C library's own is best. Lives for ever.
const lzma_allocator* largeBlocks();

}  // namespace quillory
