#import "ui/late_requests_cocoa.h"

#include "platform/autorelease_pool.h"
#include "support/log.h"
#import "ui/application_delegate_cocoa.h"

// What Java's delegate answers to (ApplicationDelegate.m of OpenJDK): AppKit sends it the one, and
// OpenJDK's own queue of early requests the other.
@interface NSObject (JavaDelegate)
- (void)application:(NSApplication*)application openFiles:(NSArray*)paths;
- (void)_handleOpenURLEvent:(NSAppleEventDescriptor*)event
             withReplyEvent:(NSAppleEventDescriptor*)reply;
@end

/// Looks for the other delegate, again and again while something waits for it.
@interface LateRequests : NSObject {
  NSMutableArray* events;
  NSMutableArray* paths;
  int looksLeft;
}
- (void)keep:(id)request in:(NSMutableArray*)list;
- (void)keepEvent:(NSAppleEventDescriptor*)event;
- (void)keepPath:(NSString*)path;
- (NSUInteger)count;
- (void)look;
@end

namespace {

constexpr NSTimeInterval kBetweenLooksSeconds = 0.25;
constexpr int kLooks = 480;  // Two minutes.

LateRequests* lateRequests() {
  static LateRequests* const requests = [[LateRequests alloc] init];
  return requests;
}

}  // namespace

@implementation LateRequests

- (id)init {
  self = [super init];
  if (self == nil) return nil;
  events = [[NSMutableArray alloc] init];
  paths = [[NSMutableArray alloc] init];
  return self;
}

- (void)keep:(id)request in:(NSMutableArray*)list {
  const bool isLooking = [self count] > 0;
  [list addObject:request];
  looksLeft = kLooks;
  if (!isLooking)
    [self performSelector:@selector(look) withObject:nil afterDelay:kBetweenLooksSeconds];
}

- (void)keepEvent:(NSAppleEventDescriptor*)event {
  // The system may change the one that it has handed out.
  NSAppleEventDescriptor* own = [event copy];
  [self keep:own in:events];
  [own release];
}

- (void)keepPath:(NSString*)path {
  [self keep:path in:paths];
}

- (NSUInteger)count {
  return [events count] + [paths count];
}

- (void)handTo:(id)delegate {
  if ([delegate respondsToSelector:@selector(_handleOpenURLEvent:withReplyEvent:)])
    for (NSUInteger i = 0; i < [events count]; ++i)
      [delegate _handleOpenURLEvent:[events objectAtIndex:i] withReplyEvent:nil];
  if ([paths count] > 0 && [delegate respondsToSelector:@selector(application:openFiles:)])
    [delegate application:NSApp openFiles:[[paths copy] autorelease]];
}

- (void)look {
  const quillory::AutoreleasePool pool;
  id delegate = [NSApp delegate];
  const bool hasComeAfterOurs = delegate != nil && delegate != quillory::ownDelegate();
  if (!hasComeAfterOurs && --looksLeft > 0) {
    [self performSelector:@selector(look) withObject:nil afterDelay:kBetweenLooksSeconds];
    return;
  }
  if (hasComeAfterOurs)
    [self handTo:delegate];
  else
    quillory::logToSystem("[Quillory] [URL] Nobody has asked for what came while Java started\n");
  [events removeAllObjects];
  [paths removeAllObjects];
}

@end

namespace quillory {

void keepUrlEventForJava(NSAppleEventDescriptor* event) { [lateRequests() keepEvent:event]; }

void keepFileForJava(NSString* path) { [lateRequests() keepPath:path]; }

NSUInteger keptForJava() { return [lateRequests() count]; }

}  // namespace quillory
