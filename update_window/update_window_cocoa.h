// The window on a screen.
#pragma once
#include <functional>

#include "update_window/update_story.h"

namespace quillory::window {

using OnPress = std::function<void(Button)>;

/// Whether there is a display to show windows on. Any thread.
bool isWindowServerThere();

/// Shows `content`, in a window that is made for it when it is the first; `onPress` hears of the
/// buttons, on the main thread. Any thread; false where it cannot be shown.
bool showInWindow(const WindowContent& content, const OnPress& onPress);

/// Takes the window from the screen.
void closeWindow();

}  // namespace quillory::window
