// What the window of a failed start shows.
#pragma once
#import "cocoa.h"

/// Its buttons and texts are subviews. It takes the clicks itself: a window without a title never
/// is the one that keys go to, so that each click in it is the first, and GNUstep may tell that the
/// mouse's button went up before it tells that it went down.
@interface FailureView : NSView
@end
