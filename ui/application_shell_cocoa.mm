#include "ui/application_shell_cocoa.h"

#include <optional>
#include <string>

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

void createApplication() { platform::prepareApplication(); }

void setUpApplicationMenu() {
  const std::optional<std::string> name = platform::bundleName();
  logToSystem("String is %s\n", name ? name->c_str() : "(null)");
  if (NSApp == nil) return;
  const AutoreleasePool pool;
  loadStandardMenu();
  retitleApplicationMenu([NSApp mainMenu],
                         name ? [NSString stringWithUTF8String:name->c_str()] : nil);
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
