// The URL that the user asked the application to open, as far as one came before the launch.
#pragma once

namespace quillory {

/// Where requested URLs come from; null as long as nobody listens.
struct UrlCalls {
  const char* (*requestedUrl)();
};
extern UrlCalls urlCalls;

/// The latest URL, borrowed, or null; says which in the system log.
const char* getRequestedURL();

}  // namespace quillory
