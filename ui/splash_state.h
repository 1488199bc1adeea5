// What of the splash its functions in other files know, too. Written by the thread that calls them,
// read by the main thread when it draws.
#pragma once
#include <atomic>

namespace quillory::splash {

extern std::atomic<int> progressPercent;  ///< as setProgress() stored it
extern std::atomic<int> splashBuffer;     ///< the margin, in pixels

}  // namespace quillory::splash
