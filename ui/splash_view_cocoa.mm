#import "ui/splash_view_cocoa.h"

#include <cstring>

#include "ui/progress_tiles.h"
#include "ui/splash.h"

namespace splash = quillory::splash;

namespace {

// Source-over, by the number that both Cocoas give it.
constexpr auto kSourceOver = static_cast<NSCompositingOperation>(2);

void drawImage(NSImage* image, int x, int y) {
  [image drawAtPoint:NSMakePoint(x, y) fromRect:NSZeroRect operation:kSourceOver fraction:1.0];
}

}  // namespace

@implementation SplashView

- (id)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  fillTile = splash::loadImageFromByteArray(splash::progress_lightblue.data(),
                                            splash::kFillTileWidth, splash::kTileHeight);
  stripesTile = splash::loadImageFromByteArray(splash::progress_lighblue_indefinite.data(),
                                               splash::kStripesTileWidth, splash::kTileHeight);
  trackTile = splash::loadImageFromByteArray(splash::track.data(), splash::kTrackTileWidth,
                                             splash::kTileHeight);
  return self;
}

- (void)dealloc {
  [picture release];
  [fillTile release];
  [trackTile release];
  [stripesTile release];
  [super dealloc];
}

- (void)setPicture:(NSImage*)image {
  [image retain];
  [picture release];
  picture = image;
  [self setNeedsDisplay:YES];
}

- (void)requestRedraw {
  [self setNeedsDisplay:YES];
}

- (void)requestBarRedraw {
  [self setNeedsDisplayInRect:NSMakeRect(0, 0, [self bounds].size.width, splash::kTileHeight)];
}

- (NSImage*)imageOfTile:(splash::Tile)tile {
  if (tile == splash::Tile::kFill) return fillTile;
  if (tile == splash::Tile::kTrack) return trackTile;
  return stripesTile;
}

- (void)drawRect:(NSRect)rect {
  // `rect` may be a part; everything has its place in the whole view.
  const NSSize whole = [self bounds].size;
  const splash::Drawing drawing =
      splash::nextDrawing(static_cast<int>(whole.width), static_cast<int>(whole.height));
  [[NSColor whiteColor] set];
  NSRectFill(rect);
  if (NSMaxY(rect) > drawing.pictureY) drawImage(picture, drawing.pictureX, drawing.pictureY);
  // Tiles that a screen enlarges would be blended at their edges with what is not there: seams.
  [[NSGraphicsContext currentContext] setImageInterpolation:NSImageInterpolationNone];
  for (const splash::TileAt& at : drawing.tiles) drawImage([self imageOfTile:at.tile], at.x, 0);
}

@end

namespace quillory::splash {

NSImage* loadImageFromByteArray(const unsigned char* data, int width, int height) {
  const std::vector<std::uint8_t> pixels = toRedGreenBlue(data, width, height);
  NSBitmapImageRep* bitmap =
      [[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                              pixelsWide:width
                                              pixelsHigh:height
                                           bitsPerSample:8
                                         samplesPerPixel:3
                                                hasAlpha:NO
                                                isPlanar:NO
                                          colorSpaceName:NSCalibratedRGBColorSpace
                                             bytesPerRow:tileRowBytes(width)
                                            bitsPerPixel:24];
  std::memcpy([bitmap bitmapData], pixels.data(), pixels.size());
  NSImage* image = [[NSImage alloc] initWithSize:NSMakeSize(width, height)];
  [image addRepresentation:bitmap];
  [bitmap release];
  return image;
}

}  // namespace quillory::splash
