// What makes the stripes of the splash move.
#pragma once
#import "cocoa.h"

@class SplashView;

/// Body of the animation thread.
@interface Redrawer : NSObject
/// Asks `view` for a redraw of the bar every 0.03 s, until the thread is cancelled. With nil it
/// only waits.
- (void)runThread:(SplashView*)view;
@end
