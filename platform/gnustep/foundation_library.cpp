#include "platform/gnustep/foundation_library.h"

#include <dlfcn.h>

#include <cstdlib>

#include "platform/gnustep/foundation_symbols.h"
#include "platform/gnustep/late_classes.h"
#include "support/exit_status.h"
#include "support/log.h"

namespace quillory::platform {

bool isFoundationLate() { return fillFoundationSymbols != nullptr; }

void loadFoundationLibrary() {
  if (!isFoundationLate()) return;
  // For all: the library of windows is linked to it, and finds the same one.
  void* const library = dlopen(QUILLORY_FOUNDATION_LIBRARY, RTLD_LAZY | RTLD_GLOBAL);
  if (library == nullptr) {
    logToSystem("The library of Foundation cannot be loaded: %s\n", dlerror());
    std::exit(kExitFailure);
  }
  fillFoundationSymbols(library);
  registerLateClasses();
}

}  // namespace quillory::platform
