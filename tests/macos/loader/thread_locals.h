// Thread-local variables of the image. Each has a descriptor, whose first member is a function that
// the code calls for the variable's address; it may change no other register than the result's.
#pragma once
#include "tests/macos/loader/image.h"

namespace quillory::loader {

/// Fills the descriptors in; every thread gets its own block with the first variable that it uses,
/// and gives it back at its end. For one image a process. Throws LoadError when the descriptors
/// lead out of the block.
void setUpThreadLocals(const Image& image);

/// What descriptors point to before.
const void* threadLocalBootstrap();

}  // namespace quillory::loader
