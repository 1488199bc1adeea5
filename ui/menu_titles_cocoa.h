// The titles of the application menu.
#pragma once
#import "cocoa.h"

namespace quillory {

/// Puts `name` into the titles of the first submenu of `mainMenu`, in place of every "%@". Nothing
/// else in a title is taken as a format: a nib is not trusted with that. Without a menu, a submenu
/// or a name nothing changes.
void retitleApplicationMenu(NSMenu* mainMenu, NSString* name);

}  // namespace quillory
