#include "support/url_request.h"

#include "support/log.h"
#include "support/platform.h"

namespace quillory {

const char* getRequestedURL() {
  const char* url = platformCalls.requestedUrl == nullptr ? nullptr : platformCalls.requestedUrl();
  if (url == nullptr) {
    logToSystem("[Quillory] [URL] Latest request is NULL\n");
  } else {
    logToSystem("[Quillory] [URL] Latest request is '%s'\n", url);
  }
  return url;
}

}  // namespace quillory
