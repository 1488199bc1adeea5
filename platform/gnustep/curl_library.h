// libcurl, loaded by the first download: most starts download nothing, and being linked to it would
// cost each of them the time of loading it.
#pragma once
#include <curl/curl.h>

namespace quillory::platform {

struct CurlLibrary {
  decltype(&curl_easy_init) easyInit;
  decltype(&curl_easy_setopt) setOption;
  decltype(&curl_easy_perform) perform;
  decltype(&curl_easy_getinfo) getInfo;
  decltype(&curl_easy_strerror) errorText;
  decltype(&curl_easy_cleanup) cleanUp;
};

/// Null where this system has no libcurl. Any thread.
const CurlLibrary* curlLibrary();

}  // namespace quillory::platform
