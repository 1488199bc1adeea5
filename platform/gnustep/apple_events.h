// Apple events, as far as the launcher uses them: requests to open a URL. Here they come over the
// session bus, where a desktop calls org.freedesktop.Application; docs/url-events.md tells how.
// GNUstep has both classes without a method.
#pragma once
#import <Foundation/Foundation.h>

#include <cstdint>

using AEEventClass = std::uint32_t;
using AEEventID = std::uint32_t;
using AEKeyword = std::uint32_t;

@interface NSAppleEventDescriptor (URLRequests)
- (NSAppleEventDescriptor*)paramDescriptorForKeyword:(AEKeyword)keyword;
- (NSString*)stringValue;
@end

@interface NSAppleEventManager (URLRequests)
+ (NSAppleEventManager*)sharedAppleEventManager;
/// Every requested URL goes to `handler`, whatever the class and ID are. Begins to listen when the
/// main run loop runs; without a session bus nothing ever comes.
- (void)setEventHandler:(id)handler
            andSelector:(SEL)selector
          forEventClass:(AEEventClass)eventClass
             andEventID:(AEEventID)eventID;
@end

/// Hands a URL that was asked for to the handler, as an event. Main thread only.
void handRequestOver(const char* url);
