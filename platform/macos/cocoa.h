// Cocoa as the launcher knows it, on macOS.
#pragma once
#import <Cocoa/Cocoa.h>
#include <dispatch/dispatch.h>

namespace quillory::platform {

inline constexpr BOOL kAnimatesResizing = YES;

/// There are screens with two pixels where others have one, and images choose among their pictures.
inline constexpr bool kHasDoubleScreens = true;

}  // namespace quillory::platform
