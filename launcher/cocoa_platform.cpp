#include "launcher/cocoa_platform.h"

#include "formats/downloads_cocoa.h"
#include "java/bundle_loader_cocoa.h"
#include "platform/support_cocoa.h"
#include "ui/application_shell_cocoa.h"
#include "ui/failure_window_cocoa.h"
#include "ui/notice_window_cocoa.h"
#include "ui/splash_window_cocoa.h"

namespace quillory {

Platform cocoaPlatform() {
  return {.systemLog = logThroughCocoa,
          .moveItem = moveThroughCocoa,
          .downloadFile = downloadThroughCocoa,
          .bundles = cocoaBundles(),
          .isMainThread = isMainThreadOfCocoa,
          .requestedUrl = latestRequestedUrl,
          .window = cocoaSplashWindow(),
          .notice = cocoaNotice(),
          .presence = cocoaPresence(),
          .failure = cocoaFailure()};
}

}  // namespace quillory
