#import "platform/gnustep/apple_events.h"

#include <memory>

#include "platform/autorelease_pool.h"
#include "platform/gnustep/desktop_bus.h"
#include "platform/main_thread.h"
#include "platform/toolkit.h"
#include "support/file_urls.h"
#include "support/opened_files.h"

using quillory::platform::DesktopBus;

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

- (void)dealloc {
  [url release];
  [super dealloc];
}

@end

/// Owns the connection to the bus, and handles its calls in the main run loop. Main thread only.
@interface BusWatcher : NSObject <RunLoopEvents> {
  std::unique_ptr<DesktopBus> bus;
  BOOL isOpened;
}
- (void)open;
- (void)process;
- (void)handleWaiting;
@end

@implementation BusWatcher

- (void)open {
  if (isOpened) return;
  isOpened = YES;
  const quillory::AutoreleasePool pool;
  NSDictionary* information = quillory::platform::bundleInformation();
  const char* identifier =
      [[[information objectForKey:@"CFBundleIdentifier"] description] UTF8String];
  const char* name = [[[information objectForKey:@"CFBundleName"] description] UTF8String];
  const std::string busName = quillory::platform::busNameOf(identifier == nullptr ? "" : identifier,
                                                            name == nullptr ? "" : name);
  if (busName.empty()) return;
  bus = DesktopBus::open(busName, [](const char* text) {
    // Files come the same way here; there they are a message of their own.
    if (const auto path = quillory::pathOfFileUrl(text)) {
      quillory::openFile(*path);
      return;
    }
    URLRequestDescriptor* event = [[URLRequestDescriptor alloc] init];
    event->url = [[NSString alloc] initWithUTF8String:text];
    [eventHandler performSelector:eventSelector withObject:event withObject:nil];
    [event release];
  });
  if (bus == nullptr) return;
  [[NSRunLoop mainRunLoop] addEvent:reinterpret_cast<void*>(std::intptr_t{bus->descriptor()})
                               type:ET_RDESC
                            watcher:self
                            forMode:NSDefaultRunLoopMode];
  [self process];
}

- (void)process {
  if (bus == nullptr || bus->process()) return;
  [[NSRunLoop mainRunLoop] removeEvent:reinterpret_cast<void*>(std::intptr_t{bus->descriptor()})
                                  type:ET_RDESC
                               forMode:NSDefaultRunLoopMode
                                   all:YES];
  bus.reset();
}

- (void)receivedEvent:(void*)data
                 type:(RunLoopEventType)type
                extra:(void*)extra
              forMode:(NSString*)mode {
  (void)data, (void)type, (void)extra, (void)mode;
  const quillory::AutoreleasePool pool;
  [self process];
}

- (void)handleWaiting {
  [self open];
  constexpr int kLongestWaitMillis = 200;
  if (bus != nullptr) bus->settle(kLongestWaitMillis);
  [self process];
}

@end

namespace {

BusWatcher* watcher = nil;

}  // namespace

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
  if (watcher != nil) return;
  watcher = [[BusWatcher alloc] init];
  [watcher performSelector:@selector(open) withObject:nil afterDelay:0];
}

@end

namespace quillory::platform {

void handleWaitingEvents() {
  onMainThread([] {
    const AutoreleasePool pool;
    [watcher handleWaiting];
  });
}

}  // namespace quillory::platform
