// What handles the get-URL Apple event.
#pragma once
#import "cocoa.h"

/// Keeps the URL of the latest event. Written on the main thread, read by the launch.
@interface URLHandler : NSObject {
  const char* requestedURL;
}
- (void)handleURLEvent:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply;
/// Borrowed, zero-terminated UTF-8, and never freed or changed; null as long as none came.
- (const char*)getRequestedURL;
@end
