#import "platform/macos/url_download.h"

#import "platform/macos/session_download.h"

namespace quillory::platform {

Class urlDownloadClass() {
  const Class old = NSClassFromString(@"NSURLDownload");
  return old != nullptr ? old : [SessionDownload class];
}

}  // namespace quillory::platform
