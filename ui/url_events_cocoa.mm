#import "ui/url_events_cocoa.h"

#include <atomic>
#include <cstring>

#include "platform/autorelease_pool.h"
#include "platform/toolkit.h"
#include "support/log.h"
#include "support/open_requests.h"
#import "ui/application_delegate_cocoa.h"
#include "ui/application_shell_cocoa.h"
#import "ui/late_requests_cocoa.h"

namespace {

constexpr AEEventClass kGetUrl = 0x4755524C;     // 'GURL'
constexpr AEKeyword kDirectObject = 0x2D2D2D2D;  // '----'

// Of type URLHandler. Written on the main thread, read by the run thread.
std::atomic<void*> urlHandler{nullptr};

}  // namespace

@implementation URLHandler

- (id)init {
  self = [super init];
  if (self != nil) requestedURL = nullptr;
  return self;
}

- (void)handleURLEvent:(NSAppleEventDescriptor*)event
        withReplyEvent:(NSAppleEventDescriptor*)reply {
  (void)reply;
  NSString* url = [[event paramDescriptorForKeyword:kDirectObject] stringValue];
  const char* inUtf8 = [url UTF8String];
  const char* text = inUtf8 == nullptr ? "" : inUtf8;
  quillory::logToSystem("[Quillory] [URL] Request received to open URL %s\n",
                        url == nil ? "(null)" : text);
  // A thread may be reading the earlier copy: it stays allocated, and is replaced in one store.
  // Not by std::atomic_ref, which the C++ library of most Macs has not.
  __atomic_store_n(&requestedURL, strdup(text), __ATOMIC_RELEASE);
  quillory::logToSystem("[Quillory] [URL] Converted URL to '%s'\n", [self getRequestedURL]);
  if (quillory::passOnOpenRequest(text) == quillory::OpenRequest::kUnheard)
    quillory::keepUrlEventForJava(event);
}

- (const char*)getRequestedURL {
  return __atomic_load_n(&requestedURL, __ATOMIC_ACQUIRE);
}

@end

namespace quillory {
namespace {

void listenForRequests() {
  const AutoreleasePool pool;
  URLHandler* handler = [[URLHandler alloc] init];
  urlHandler = handler;
  [NSApp setDelegate:ownDelegate()];
  [[NSAppleEventManager sharedAppleEventManager] setEventHandler:handler
                                                     andSelector:@selector(handleURLEvent:
                                                                           withReplyEvent:)
                                                   forEventClass:kGetUrl
                                                      andEventID:kGetUrl];
}

}  // namespace

const char* latestRequestedUrl() {
  // A URL that came before is not to be missed because nobody had the time to handle it.
  platform::handleWaitingEvents();
  return [static_cast<URLHandler*>(urlHandler.load()) getRequestedURL];
}

void registerOSXEventListener() {
  logToSystem("[Wrapper] Registering shared apple event manager handler\n");
  platform::beforeFirstRequest(listenForRequests);
}

}  // namespace quillory
