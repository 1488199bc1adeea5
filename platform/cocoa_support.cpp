#include "platform/cocoa_support.h"

#include "support/files.h"
#include "support/log.h"

namespace quillory {

void installCocoaSupport() {
  logCalls.systemLog = logThroughCocoa;
  fileCalls.moveItem = moveThroughCocoa;
}

}  // namespace quillory
