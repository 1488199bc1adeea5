// Random numbers that nobody can guess: the system's, or none. What falls back to something weaker
// makes keys that look like all others.
#pragma once
#include <cstddef>

namespace quillory::pack {

/// Fills `count` bytes at `out` with random ones. False, with nothing that may be used in them,
/// when the system gives none. Needs no file, so it works without /dev as well.
bool fillWithSystemRandom(void* out, std::size_t count);

}  // namespace quillory::pack
