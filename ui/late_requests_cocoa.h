// What the user wants opened while Java starts: the launch has been told what came before, and
// Java's toolkit hears of nothing before it has put its own delegate in the place of ours.
#pragma once
#import "cocoa.h"

namespace quillory {

/// Keeps the event of a URL, or the path of a file, and hands it to the delegate that comes after
/// ours, as the system would have done. Where none comes within two minutes it is dropped: such an
/// application has no toolkit. Main thread only.
void keepUrlEventForJava(NSAppleEventDescriptor* event);
void keepFileForJava(NSString* path);

/// How many wait to be handed over; for tests. Main thread only.
NSUInteger keptForJava();

}  // namespace quillory
