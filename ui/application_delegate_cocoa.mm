#import "ui/application_delegate_cocoa.h"

#include <csignal>

#include "platform/launch_gate.h"
#include "support/log.h"
#include "support/opened_files.h"
#import "ui/late_requests_cocoa.h"

@implementation QuilloryDelegate

- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)application {
  (void)application;
  quillory::logToSystem("[Quillory] Asked to quit: ending as by SIGTERM\n");
  std::raise(SIGTERM);
  return NSTerminateCancel;
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  (void)notification;
  quillory::platform::endOfLaunch().open();
}

- (void)application:(NSApplication*)application openFiles:(NSArray*)paths {
  (void)application;
  for (NSUInteger i = 0; i < [paths count]; ++i) {
    NSString* path = [paths objectAtIndex:i];
    const char* text = [path fileSystemRepresentation];
    if (text != nullptr && !quillory::openFile(text)) quillory::keepFileForJava(path);
  }
}

// It restores nothing. Without an answer newer systems complain.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application {
  (void)application;
  return YES;
}

@end

namespace quillory {

QuilloryDelegate* ownDelegate() {
  static QuilloryDelegate* const delegate = [[QuilloryDelegate alloc] init];
  return delegate;
}

}  // namespace quillory
