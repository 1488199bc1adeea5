// Cocoa as the launcher knows it, on macOS.
#pragma once
#import <Cocoa/Cocoa.h>
#include <dispatch/dispatch.h>

namespace quillory::platform {

inline constexpr BOOL kAnimatesResizing = YES;

}  // namespace quillory::platform
