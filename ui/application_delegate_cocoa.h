// What the application object tells, until Java's own toolkit takes that over.
#pragma once
#import "cocoa.h"

/// The delegate of the launcher's application object. Not called ApplicationDelegate: a class of
/// that name comes into the process with Java's toolkit.
@interface QuilloryDelegate : NSObject
/// Quit in the menu or the Dock, and log-out: ends the process as SIGTERM does, after which a JVM
/// runs its shutdown hooks, and refuses. Agreed to, the application object would end the process on
/// the spot, and what Java has not yet written would be lost.
- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)application;
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (void)application:(NSApplication*)application openFiles:(NSArray*)paths;
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application;
@end

namespace quillory {

/// The only one, made with the first call. Main thread only.
QuilloryDelegate* ownDelegate();

}  // namespace quillory
