// Cocoa as the launcher knows it, on GNUstep: the framework, and the declarations it lacks.
#pragma once
#import <Cocoa/Cocoa.h>

#import "apple_events.h"
#include "cf_bundle.h"
#include "main_queue.h"

namespace quillory::platform {

/// An animated resize is carried out by a timer here, and loses against a centring that follows.
inline constexpr BOOL kAnimatesResizing = NO;

/// An image might choose the larger of its pictures for any screen here.
inline constexpr bool kHasDoubleScreens = false;

}  // namespace quillory::platform

enum { kCGFloatingWindowLevelKey = 5 };

inline int CGWindowLevelForKey(int key) {
  return key == kCGFloatingWindowLevelKey ? NSFloatingWindowLevel : NSNormalWindowLevel;
}
