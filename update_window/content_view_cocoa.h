// The view of the window, where its buttons are pressed.
#pragma once
#import "cocoa.h"

#include "update_window/content_drawing_cocoa.h"

@interface UpdateContentView : NSView {
  quillory::window::ViewState* state;
}
/// For setContent() and setOnPress().
- (quillory::window::ViewState*)state;
@end
