// How to leave the image's functions by an exception. The image says it in a compact form
// (__unwind_info), and only for what does not fit there in DWARF (__eh_frame), which is all that
// this machine's unwinder knows: so the compact form is written out in DWARF.
#pragma once
#include "tests/macos/loader/image.h"

namespace quillory::loader {

/// Registers all functions of the image with the unwinder, for good. Throws LoadError for what the
/// two sections cannot mean.
void registerUnwinding(const Image& image);

}  // namespace quillory::loader
