// Classes that inherit from those of AppKit, which is loaded late: nothing here is there before.
#import <AppKit/AppKit.h>

/// GNUstep animates by a timer, and loses against a centring that follows.
@interface ImageWindow : NSWindow
@end

@implementation ImageWindow

- (void)setFrame:(NSRect)frame display:(BOOL)display animate:(BOOL)animate {
  (void)animate;
  [self setFrame:frame display:display];
}

@end

/// The window server here makes no difference between programs.
@interface NSApplication (Activation)
- (BOOL)setActivationPolicy:(NSInteger)policy;
@end

@implementation NSApplication (Activation)

- (BOOL)setActivationPolicy:(NSInteger)policy {
  (void)policy;
  return YES;
}

@end
