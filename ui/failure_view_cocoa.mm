#import "ui/failure_view_cocoa.h"

@implementation FailureView

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  (void)event;
  return YES;
}

- (NSView*)hitTest:(NSPoint)point {
  (void)point;
  return self;
}

- (void)mouseDown:(NSEvent*)event {
  const NSPoint point = [event locationInWindow];
  NSArray* views = [self subviews];
  for (NSUInteger i = 0; i < [views count]; ++i) {
    id view = [views objectAtIndex:i];
    const BOOL isButton = [view isKindOfClass:[NSButton class]];
    if (isButton && NSPointInRect(point, [view frame])) [view performClick:self];
  }
}

@end
