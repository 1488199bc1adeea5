#include "support/url_request.h"

#include "support/log.h"

namespace quillory {

UrlCalls urlCalls = {.requestedUrl = nullptr};

const char* getRequestedURL() {
  const char* url = urlCalls.requestedUrl == nullptr ? nullptr : urlCalls.requestedUrl();
  if (url == nullptr) {
    logToSystem("[Quillory] [URL] Latest request is NULL\n");
  } else {
    logToSystem("[Quillory] [URL] Latest request is '%s'\n", url);
  }
  return url;
}

}  // namespace quillory
