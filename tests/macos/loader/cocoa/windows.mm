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
