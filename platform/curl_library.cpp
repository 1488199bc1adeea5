#include "platform/curl_library.h"

#include <dlfcn.h>

#include <optional>

namespace quillory::platform {
namespace {

template <typename Function>
bool find(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(dlsym(library, name));
  return function != nullptr;
}

std::optional<CurlLibrary> load() {
  void* const library = dlopen(curlLibraryName(), RTLD_NOW | RTLD_LOCAL);  // stays for good
  if (library == nullptr) return std::nullopt;
  decltype(&curl_global_init) globalInit = nullptr;
  CurlLibrary curl = {};
  const bool isComplete = find(library, "curl_global_init", globalInit) &&
                          find(library, "curl_easy_init", curl.easyInit) &&
                          find(library, "curl_easy_setopt", curl.setOption) &&
                          find(library, "curl_easy_perform", curl.perform) &&
                          find(library, "curl_easy_getinfo", curl.getInfo) &&
                          find(library, "curl_easy_strerror", curl.errorText) &&
                          find(library, "curl_easy_cleanup", curl.cleanUp) &&
                          find(library, "curl_slist_append", curl.appendToList) &&
                          find(library, "curl_slist_free_all", curl.freeList);
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
