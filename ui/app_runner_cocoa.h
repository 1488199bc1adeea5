// A scripted demonstration of the splash, for whoever works on it. The launcher never starts it.
#pragma once
#import "cocoa.h"

@interface AppRunner : NSObject
/// Body of a thread: about nine seconds of a splash that was shown before, then takes it off the
/// screen. The argument is ignored.
- (void)runThread:(id)argument;
@end
