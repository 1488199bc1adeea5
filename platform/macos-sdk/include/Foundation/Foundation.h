// Foundation, as far as the launcher calls it.
#pragma once
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <objc/NSObject.h>
#include <stdint.h>

@class NSArray, NSDate, NSDictionary, NSError, NSString, NSURL, NSURLResponse;

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double NSTimeInterval;
typedef struct _NSZone NSZone;
typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;

extern "C" {

extern const NSRect NSZeroRect;
BOOL NSPointInRect(NSPoint point, NSRect rect);

Class NSClassFromString(NSString* name);
void NSLog(NSString* format, ...) __attribute__((format(__NSString__, 1, 2)));

}  // extern "C"

inline NSPoint NSMakePoint(CGFloat x, CGFloat y) { return {x, y}; }
inline NSSize NSMakeSize(CGFloat width, CGFloat height) { return {width, height}; }
inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  return {{x, y}, {width, height}};
}
inline CGFloat NSMaxY(NSRect rect) { return rect.origin.y + rect.size.height; }

@interface NSObject (NSThreadPerformAdditions)
- (void)performSelectorOnMainThread:(SEL)selector withObject:(id)argument waitUntilDone:(BOOL)wait;
@end

@interface NSObject (NSDelayedPerforming)
- (void)performSelector:(SEL)selector withObject:(id)argument afterDelay:(NSTimeInterval)seconds;
@end

@interface NSAutoreleasePool : NSObject
- (void)drain;
@end

typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4, NSISOLatin1StringEncoding = 5 };

@interface NSString : NSObject
+ (instancetype)stringWithUTF8String:(const char*)text;
+ (instancetype)stringWithFormat:(NSString*)format, ... __attribute__((format(__NSString__, 1, 2)));
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSStringEncoding)encoding;
- (const char*)UTF8String;
- (const char*)fileSystemRepresentation;
- (NSString*)stringByReplacingOccurrencesOfString:(NSString*)target
                                       withString:(NSString*)replacement;
@end

@interface NSData : NSObject
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length;
@end

@interface NSDictionary : NSObject
+ (instancetype)dictionaryWithObject:(id)object forKey:(id)key;
+ (instancetype)dictionaryWithObjectsAndKeys:(id)first, ...;
- (id)objectForKey:(id)key;
@end

@interface NSArray : NSObject
+ (instancetype)arrayWithObject:(id)object;
- (NSUInteger)count;
- (id)objectAtIndex:(NSUInteger)index;
@end

@interface NSMutableArray : NSArray
- (void)addObject:(id)object;
- (void)removeAllObjects;
@end

@interface NSNotification : NSObject
@end

extern "C" NSString* const NSArgumentDomain;

@interface NSUserDefaults : NSObject
+ (NSUserDefaults*)standardUserDefaults;
- (void)registerDefaults:(NSDictionary*)defaults;
- (void)removeVolatileDomainForName:(NSString*)name;
@end

typedef uint64_t NSActivityOptions;

@interface NSProcessInfo : NSObject
+ (NSProcessInfo*)processInfo;
- (NSString*)processName;
- (id)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason;
- (void)endActivity:(id)activity;
@end

@interface NSError : NSObject
- (NSString*)localizedDescription;
- (NSDictionary*)userInfo;
@end

@interface NSDate : NSObject
+ (NSDate*)distantFuture;
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)seconds;
@end

@interface NSBundle : NSObject
+ (NSBundle*)mainBundle;
+ (instancetype)bundleWithPath:(NSString*)path;
- (NSDictionary*)infoDictionary;
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)extension;
@end

@interface NSFileManager : NSObject
+ (NSFileManager*)defaultManager;
- (NSString*)stringWithFileSystemRepresentation:(const char*)text length:(NSUInteger)length;
- (BOOL)moveItemAtPath:(NSString*)from toPath:(NSString*)to error:(NSError**)error;
@end

@interface NSThread : NSObject
+ (NSThread*)currentThread;
+ (BOOL)isMainThread;
+ (void)sleepForTimeInterval:(NSTimeInterval)seconds;
- (instancetype)initWithTarget:(id)target selector:(SEL)selector object:(id)argument;
- (void)start;
- (void)cancel;
- (BOOL)isCancelled;
@end

typedef NSString* NSRunLoopMode;
extern "C" const NSRunLoopMode NSDefaultRunLoopMode;

@interface NSObject (NSThreadPerforming)
- (void)performSelector:(SEL)selector
               onThread:(NSThread*)thread
             withObject:(id)argument
          waitUntilDone:(BOOL)wait;
@end

@interface NSRunLoop : NSObject
+ (NSRunLoop*)currentRunLoop;
- (BOOL)runMode:(NSRunLoopMode)mode beforeDate:(NSDate*)limit;
@end

@interface NSTimer : NSObject
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)seconds
                                    target:(id)target
                                  selector:(SEL)selector
                                  userInfo:(id)userInfo
                                   repeats:(BOOL)repeats;
@end

@interface NSURL : NSObject
+ (instancetype)URLWithString:(NSString*)text;
+ (NSURL*)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDirectory;
- (NSString*)absoluteString;
- (NSString*)path;
@end

typedef NSUInteger NSURLRequestCachePolicy;
enum : NSURLRequestCachePolicy { NSURLRequestUseProtocolCachePolicy = 0 };

@interface NSURLRequest : NSObject
+ (instancetype)requestWithURL:(NSURL*)url
                   cachePolicy:(NSURLRequestCachePolicy)policy
               timeoutInterval:(NSTimeInterval)seconds;
- (NSURL*)URL;
- (NSTimeInterval)timeoutInterval;
@end

static const long long NSURLResponseUnknownLength = -1;

@interface NSURLResponse : NSObject
- (NSURL*)URL;
- (long long)expectedContentLength;
@end

@interface NSHTTPURLResponse : NSURLResponse
- (NSInteger)statusCode;
@end

extern "C" NSString* const NSURLErrorFailingURLStringErrorKey;

@interface NSURLDownload : NSObject
- (instancetype)initWithRequest:(NSURLRequest*)request delegate:(id)delegate;
- (void)setDestination:(NSString*)path allowOverwrite:(BOOL)allowOverwrite;
- (void)cancel;
@end

@class NSOperationQueue;

@interface NSURLSessionConfiguration : NSObject
+ (NSURLSessionConfiguration*)ephemeralSessionConfiguration;
- (void)setTimeoutIntervalForRequest:(NSTimeInterval)seconds;
@end

@interface NSURLSessionTask : NSObject
- (NSURLResponse*)response;
- (void)resume;
@end

@interface NSURLSessionDownloadTask : NSURLSessionTask
@end

@interface NSURLSession : NSObject
+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)configuration
                                 delegate:(id)delegate
                            delegateQueue:(NSOperationQueue*)queue;
- (NSURLSessionDownloadTask*)downloadTaskWithRequest:(NSURLRequest*)request;
- (void)finishTasksAndInvalidate;
- (void)invalidateAndCancel;
@end

typedef uint32_t AEEventClass;
typedef uint32_t AEEventID;
typedef uint32_t AEKeyword;

@interface NSAppleEventDescriptor : NSObject
- (NSAppleEventDescriptor*)paramDescriptorForKeyword:(AEKeyword)keyword;
- (NSString*)stringValue;
@end

@interface NSAppleEventManager : NSObject
+ (NSAppleEventManager*)sharedAppleEventManager;
- (void)setEventHandler:(id)handler
            andSelector:(SEL)selector
          forEventClass:(AEEventClass)eventClass
             andEventID:(AEEventID)eventID;
@end
