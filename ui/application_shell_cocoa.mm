#include "ui/application_shell_cocoa.h"

#include "platform/autorelease_pool.h"
#include "platform/main_thread.h"
#include "platform/toolkit.h"
#include "support/log.h"
#import "ui/menu_titles_cocoa.h"

namespace quillory {
namespace {

// The application menu that Java applications share. Its titles have a place for the name.
void loadStandardMenu() {
  NSBundle* framework = [NSBundle bundleWithPath:@"/System/Library/Frameworks/JavaVM.framework"];
  NSString* nib = [framework pathForResource:@"DefaultApp" ofType:@"nib"];
  if (nib == nil) return;
  NSDictionary* names = [NSDictionary dictionaryWithObject:NSApp forKey:@"NSOwner"];
  [NSBundle loadNibFile:nib externalNameTable:names withZone:nullptr];
}

}  // namespace

void startCocoa(char** arguments) { platform::startToolkit(arguments[0]); }

void createApplication() {
  const AutoreleasePool pool;
  platform::prepareApplication();
}

void setUpApplicationMenu() {
  const AutoreleasePool pool;
  NSString* name = [platform::bundleInformation() objectForKey:@"CFBundleName"];
  logToSystem("String is %s\n", name == nil ? "(null)" : [name UTF8String]);
  if (NSApp == nil) return;
  loadStandardMenu();
  retitleApplicationMenu([NSApp mainMenu], name);
}

void leaveDock() {
  platform::onMainThread([] { platform::leaveDock(); });
}

PresenceCalls cocoaPresence() {
  return {.leaveDock = leaveDock,
          .beginWork = platform::beginActivity,
          .endWork = platform::endActivity};
}

void runApplication() { platform::runMainLoop(); }

}  // namespace quillory
