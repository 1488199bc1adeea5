// libproxy, where it is installed: its interface is four functions of C.
#include <dlfcn.h>

#include "update/system_proxies.h"

namespace quillory::update {
namespace {

constexpr char kLibrary[] = "libproxy.so.1";

using NewFactory = void*();
using GetProxies = char**(void* factory, const char* url);

}  // namespace

Proxies proxiesOfSystem(const std::string& url) {
  void* const library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return {};
  auto* const newFactory = reinterpret_cast<NewFactory*>(dlsym(library, "px_proxy_factory_new"));
  auto* const getProxies =
      reinterpret_cast<GetProxies*>(dlsym(library, "px_proxy_factory_get_proxies"));
  if (newFactory == nullptr || getProxies == nullptr) return {};
  void* const factory = newFactory();
  if (factory == nullptr) return {};
  // Nothing is given back: the process has nothing else to do.
  char* const* const answers = getProxies(factory, url.c_str());
  Proxies proxies;
  for (char* const* answer = answers; answer != nullptr && *answer != nullptr; ++answer)
    if (std::string proxy = proxyOf(*answer); !proxy.empty()) proxies.push_back(std::move(proxy));
  return proxies;
}

}  // namespace quillory::update
