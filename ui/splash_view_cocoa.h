// What the splash window shows.
#pragma once
#import "cocoa.h"

/// Draws what quillory::splash::nextDrawing() says.
@interface SplashView : NSView {
  NSImage* picture;
  NSImage* fillTile;
  NSImage* trackTile;
  NSImage* stripesTile;
}
/// nil for none.
- (void)setPicture:(NSImage*)image;
/// Ask for a redraw of everything, or of the bar. Without arguments, so that another thread can
/// have them sent on the main thread.
- (void)requestRedraw;
- (void)requestBarRedraw;
@end

namespace quillory::splash {

/// An image of a table of ui/progress_tiles.h. The caller releases it.
NSImage* loadImageFromByteArray(const unsigned char* data, int width, int height);

}  // namespace quillory::splash
