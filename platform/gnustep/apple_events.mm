#import "platform/gnustep/apple_events.h"

#include "platform/autorelease_pool.h"
#include "platform/gnustep/request_bus.h"

namespace {

id eventHandler = nil;
SEL eventSelector = nullptr;

}  // namespace

/// An event, and its own only parameter: one URL.
@interface URLRequestDescriptor : NSAppleEventDescriptor {
 @public
  NSString* url;
}
@end

@implementation URLRequestDescriptor

- (NSAppleEventDescriptor*)paramDescriptorForKeyword:(AEKeyword)keyword {
  (void)keyword;
  return self;
}

- (NSString*)stringValue {
  return url;
}

// It never changes.
- (id)copyWithZone:(NSZone*)zone {
  (void)zone;
  return [self retain];
}

- (void)dealloc {
  [url release];
  [super dealloc];
}

@end

void handRequestOver(const char* url) {
  const quillory::AutoreleasePool pool;
  URLRequestDescriptor* event = [[URLRequestDescriptor alloc] init];
  event->url = [[NSString alloc] initWithUTF8String:url];
  [eventHandler performSelector:eventSelector withObject:event withObject:nil];
  [event release];
}

@implementation NSAppleEventDescriptor (URLRequests)

- (NSAppleEventDescriptor*)paramDescriptorForKeyword:(AEKeyword)keyword {
  (void)keyword;
  return nil;
}

- (NSString*)stringValue {
  return nil;
}

@end

@implementation NSAppleEventManager (URLRequests)

+ (NSAppleEventManager*)sharedAppleEventManager {
  static NSAppleEventManager* manager = [[NSAppleEventManager alloc] init];
  return manager;
}

- (void)setEventHandler:(id)handler
            andSelector:(SEL)selector
          forEventClass:(AEEventClass)eventClass
             andEventID:(AEEventID)eventID {
  (void)eventClass, (void)eventID;
  eventHandler = handler;
  eventSelector = selector;
  quillory::platform::listenToBus(handRequestOver);
}

@end
