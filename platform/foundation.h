// Foundation where it is not there from the start: loading it takes 8 ms, and most starts never
// need it.
#pragma once
#include <atomic>

namespace quillory {

/// What brings Foundation up, null where it is there. Set by the toolkit's start; the calls of any
/// thread may meet, and each returns when it is up.
inline std::atomic<void (*)()> foundationBringer{nullptr};

/// Before Foundation is used. An AutoreleasePool does it by itself.
inline void needFoundation() {
  if (auto* const bring = foundationBringer.load(std::memory_order_acquire)) bring();
}

}  // namespace quillory
