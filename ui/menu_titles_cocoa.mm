#import "ui/menu_titles_cocoa.h"

namespace quillory {

void retitleApplicationMenu(NSMenu* mainMenu, NSString* name) {
  if (name == nil || [mainMenu numberOfItems] == 0) return;
  NSMenu* applicationMenu = [[mainMenu itemAtIndex:0] submenu];
  const NSInteger count = [applicationMenu numberOfItems];
  for (NSInteger i = 0; i < count; ++i) {
    id item = [applicationMenu itemAtIndex:i];
    [item setTitle:[[item title] stringByReplacingOccurrencesOfString:@"%@" withString:name]];
  }
}

}  // namespace quillory
