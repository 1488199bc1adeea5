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
  decltype(&curl_slist_append) appendToList;
  decltype(&curl_slist_free_all) freeList;
};

/// Null where this system has no libcurl. Any thread.
const CurlLibrary* curlLibrary();

/// What the system calls it: "libcurl.so.4", say.
const char* curlLibraryName();

}  // namespace quillory::platform
