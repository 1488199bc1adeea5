// Which thread this is, asked without Foundation.
#pragma once
#include <unistd.h>

namespace quillory::platform {

inline bool isMainThread() { return gettid() == getpid(); }

}  // namespace quillory::platform
