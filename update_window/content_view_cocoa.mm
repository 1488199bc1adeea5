#import "update_window/content_view_cocoa.h"

namespace window = quillory::window;

@implementation UpdateContentView

- (id)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self != nil) state = window::newViewState();
  return self;
}

- (void)dealloc {
  window::deleteViewState(state);
  [super dealloc];
}

- (window::ViewState*)state {
  return state;
}

- (void)drawRect:(NSRect)rect {
  (void)rect;
  window::drawContent(state);
}

// A window without a title never is the one that keys go to: each click in it would be the first.
- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  (void)event;
  return YES;
}

// As soon as the mouse goes down: the first click activates the application, and GNUstep may then
// tell that the button went up before it tells that it went down.
- (void)mouseDown:(NSEvent*)event {
  window::pressAt(state, [event locationInWindow]);
}

@end
