#include "platform/macos/hidden_arguments.h"

#include <crt_externs.h>

#import "cocoa.h"

namespace quillory::platform {

void hideArguments(char* programName) {
  // For whoever asks the system for them from now on.
  static char* shown[] = {programName, nullptr};
  *_NSGetArgc() = 1;
  *_NSGetArgv() = shown;
  // Cocoa has read them by now, as settings ("-Name value") and as words.
  NSUserDefaults* settings = [NSUserDefaults standardUserDefaults];
  [settings removeVolatileDomainForName:NSArgumentDomain];
  [settings registerDefaults:[NSDictionary dictionaryWithObject:@"NO"
                                                         forKey:@"NSTreatUnknownArgumentsAsOpen"]];
}

}  // namespace quillory::platform
