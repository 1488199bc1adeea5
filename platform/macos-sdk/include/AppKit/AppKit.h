// AppKit, as far as the launcher calls it.
#pragma once
#import <Foundation/Foundation.h>

@class NSMenu;

typedef NSInteger NSWindowLevel;
typedef NSUInteger NSWindowStyleMask;
typedef NSUInteger NSBackingStoreType;
enum : NSBackingStoreType { NSBackingStoreBuffered = 2 };
typedef NSUInteger NSCompositingOperation;
typedef NSString* NSColorSpaceName;

extern "C" {

extern const NSColorSpaceName NSCalibratedRGBColorSpace;

void NSRectFill(NSRect rect);

}  // extern "C"

@interface NSEvent : NSObject
+ (NSPoint)mouseLocation;
- (NSPoint)locationInWindow;
@end

@interface NSResponder : NSObject
- (void)mouseDown:(NSEvent*)event;
@end

typedef NSUInteger NSApplicationTerminateReply;
enum : NSApplicationTerminateReply { NSTerminateCancel = 0 };

@interface NSApplication : NSResponder
+ (NSApplication*)sharedApplication;
- (void)run;
- (id)delegate;
- (void)setDelegate:(id)delegate;
- (NSMenu*)mainMenu;
- (BOOL)setActivationPolicy:(NSInteger)policy;
- (void)activateIgnoringOtherApps:(BOOL)ignores;
@end

extern "C" NSApplication* NSApp;

@interface NSBundle (NSNibLoading)
+ (BOOL)loadNibFile:(NSString*)path externalNameTable:(NSDictionary*)names withZone:(NSZone*)zone;
@end

@interface NSMenuItem : NSObject
- (NSMenu*)submenu;
- (NSString*)title;
- (void)setTitle:(NSString*)title;
@end

@interface NSMenu : NSObject
- (NSInteger)numberOfItems;
- (NSMenuItem*)itemAtIndex:(NSInteger)index;
@end

@interface NSColor : NSObject
+ (NSColor*)whiteColor;
+ (NSColor*)colorWithCalibratedRed:(CGFloat)red
                             green:(CGFloat)green
                              blue:(CGFloat)blue
                             alpha:(CGFloat)alpha;
- (void)set;
@end

@interface NSFont : NSObject
+ (NSFont*)systemFontOfSize:(CGFloat)size;
+ (NSFont*)boldSystemFontOfSize:(CGFloat)size;
+ (NSFont*)userFixedPitchFontOfSize:(CGFloat)size;
@end

@interface NSBezierPath : NSObject
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect
                                   xRadius:(CGFloat)xRadius
                                   yRadius:(CGFloat)yRadius;
- (void)fill;
- (void)stroke;
@end

@interface NSString (NSStringDrawing)
- (NSSize)sizeWithAttributes:(NSDictionary*)attributes;
- (void)drawAtPoint:(NSPoint)point withAttributes:(NSDictionary*)attributes;
- (void)drawInRect:(NSRect)rect withAttributes:(NSDictionary*)attributes;
@end

typedef NSUInteger NSImageInterpolation;
enum : NSImageInterpolation { NSImageInterpolationNone = 1 };

@interface NSGraphicsContext : NSObject
+ (NSGraphicsContext*)currentContext;
- (void)setImageInterpolation:(NSImageInterpolation)interpolation;
@end

@interface NSImageRep : NSObject
- (NSSize)size;
- (void)setSize:(NSSize)size;
@end

@interface NSBitmapImageRep : NSImageRep
- (instancetype)initWithBitmapDataPlanes:(unsigned char**)planes
                              pixelsWide:(NSInteger)width
                              pixelsHigh:(NSInteger)height
                           bitsPerSample:(NSInteger)bitsPerSample
                         samplesPerPixel:(NSInteger)samplesPerPixel
                                hasAlpha:(BOOL)hasAlpha
                                isPlanar:(BOOL)isPlanar
                          colorSpaceName:(NSColorSpaceName)colorSpaceName
                             bytesPerRow:(NSInteger)bytesPerRow
                            bitsPerPixel:(NSInteger)bitsPerPixel;
+ (instancetype)imageRepWithData:(NSData*)data;
- (unsigned char*)bitmapData;
@end

@interface NSImage : NSObject
- (instancetype)initWithSize:(NSSize)size;
- (NSSize)size;
- (void)addRepresentation:(NSImageRep*)representation;
- (void)drawAtPoint:(NSPoint)point
           fromRect:(NSRect)source
          operation:(NSCompositingOperation)operation
           fraction:(CGFloat)opacity;
@end

@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frame;
- (NSRect)bounds;
- (void)drawRect:(NSRect)dirty;
- (void)setNeedsDisplay:(BOOL)isNeeded;
- (void)setNeedsDisplayInRect:(NSRect)rect;
- (void)addSubview:(NSView*)view;
- (NSArray*)subviews;
- (BOOL)acceptsFirstMouse:(NSEvent*)event;
@end

@interface NSControl : NSView
- (void)setStringValue:(NSString*)text;
- (void)setFont:(NSFont*)font;
- (void)performClick:(id)sender;
- (void)setTarget:(id)target;
- (void)setAction:(SEL)action;
@end

@interface NSTextField : NSControl
- (void)setEditable:(BOOL)isEditable;
- (void)setSelectable:(BOOL)isSelectable;
- (void)setBezeled:(BOOL)isBezeled;
- (void)setDrawsBackground:(BOOL)isDrawn;
@end

@interface NSButton : NSControl
- (void)setTitle:(NSString*)title;
@end

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)isDeferred;
- (NSRect)frame;
- (BOOL)isVisible;
- (void)setFrame:(NSRect)frame display:(BOOL)isDisplayed animate:(BOOL)isAnimated;
- (void)setReleasedWhenClosed:(BOOL)isReleased;
- (void)setTitle:(NSString*)title;
- (void)setBackgroundColor:(NSColor*)color;
- (void)setHasShadow:(BOOL)hasShadow;
- (void)setContentView:(NSView*)view;
- (void)setLevel:(NSWindowLevel)level;
- (void)center;
- (void)makeKeyAndOrderFront:(id)sender;
- (void)orderOut:(id)sender;
- (void)close;
@end

@interface NSPasteboard : NSObject
+ (NSPasteboard*)generalPasteboard;
- (NSInteger)declareTypes:(NSArray*)types owner:(id)owner;
- (BOOL)setString:(NSString*)text forType:(NSString*)type;
@end

@interface NSWorkspace : NSObject
+ (NSWorkspace*)sharedWorkspace;
- (BOOL)selectFile:(NSString*)file inFileViewerRootedAtPath:(NSString*)path;
@end
