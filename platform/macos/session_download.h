// What NSURLDownload does, by NSURLSession, for systems that have no more of the former.
#pragma once
#import <Foundation/Foundation.h>

/// The delegate hears the messages of NSURLDownload, on the thread that has set the destination and
/// while its run loop turns. It is retained until the end; what it is told is the SessionDownload.
@interface SessionDownload : NSObject {
 @private
  NSURLRequest* request;
  id delegate;
  NSString* destination;
  NSThread* thread;
  NSURLSession* session;
  NSURLSessionDownloadTask* task;
  BOOL mayOverwrite;
  BOOL isResponseTold;
  BOOL isOver;
}

/// Nil for a request without a URL.
- (id)initWithRequest:(NSURLRequest*)newRequest delegate:(id)newDelegate;

/// Starts the transfer. A file at the path is there only after downloadDidFinish:.
- (void)setDestination:(NSString*)path allowOverwrite:(BOOL)allowOverwrite;

/// Ends the transfer without another message.
- (void)cancel;

@end
