#include "platform/curl_library.h"

#include <dlfcn.h>

#include <optional>

#include "platform/loaded_function.h"

namespace quillory::platform {
namespace {

std::optional<CurlLibrary> load() {
  void* const library = dlopen(curlLibraryName(), RTLD_NOW | RTLD_LOCAL);  // stays for good
  if (library == nullptr) return std::nullopt;
  decltype(&curl_global_init) globalInit = nullptr;
  CurlLibrary curl = {};
  const bool isComplete = findFunction(library, "curl_global_init", globalInit) &&
                          findFunction(library, "curl_easy_init", curl.easyInit) &&
                          findFunction(library, "curl_easy_setopt", curl.setOption) &&
                          findFunction(library, "curl_easy_perform", curl.perform) &&
                          findFunction(library, "curl_easy_getinfo", curl.getInfo) &&
                          findFunction(library, "curl_easy_strerror", curl.errorText) &&
                          findFunction(library, "curl_easy_cleanup", curl.cleanUp) &&
                          findFunction(library, "curl_slist_append", curl.appendToList) &&
                          findFunction(library, "curl_slist_free_all", curl.freeList);
  if (!isComplete || globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return std::nullopt;
  return curl;
}

}  // namespace

const char* curlLibraryName() { return QUILLORY_CURL_LIBRARY; }

const CurlLibrary* curlLibrary() {
  static const std::optional<CurlLibrary> library = load();
  return library ? &*library : nullptr;
}

}  // namespace quillory::platform
