// What is drawn in the window, and which button is where. Main thread only.
#pragma once
#import "cocoa.h"

#include "update_window/update_window_cocoa.h"

namespace quillory::window {

/// Of a view, which owns it. Its members stay out of sight of Objective-C, which would describe
/// them to its run-time library, and cannot.
struct ViewState;
ViewState* newViewState();
void deleteViewState(ViewState* state);

void setContent(ViewState* state, const WindowContent& content);
void setOnPress(ViewState* state, const OnPress& onPress);

/// Everything, into the view that has the focus.
void drawContent(ViewState* state);

/// Presses the button at `point`, if there is one.
void pressAt(ViewState* state, NSPoint point);

}  // namespace quillory::window
