// CFNetwork, which quillory-update is not linked to: it is loaded by the process that asks. Scripts
// of a network (automatic configuration) are not run: what they would say counts as nothing known.
#include <dlfcn.h>

#include <array>
#include <cstdint>

#include "update/system_proxies.h"

namespace quillory::update {
namespace {

#ifndef QUILLORY_CFNETWORK
#define QUILLORY_CFNETWORK "/System/Library/Frameworks/CFNetwork.framework/CFNetwork"
#endif

// The types and numbers of CoreFoundation, as its interface documents them.
using Object = const void*;
using Index = long;
using Truth = unsigned char;
constexpr std::uint32_t kUtf8 = 0x08000100;
constexpr Index kIntNumber = 9;
constexpr std::size_t kMaxHost = 1025;

class CoreNetwork {
 public:
  CoreNetwork() : library_(dlopen(QUILLORY_CFNETWORK, RTLD_NOW | RTLD_LOCAL)) {
    find("CFURLCreateWithBytes", makeUrl);
    find("CFNetworkCopySystemProxySettings", systemSettings);
    find("CFNetworkCopyProxiesForURL", proxiesForUrl);
    find("CFArrayGetCount", count);
    find("CFArrayGetValueAtIndex", at);
    find("CFDictionaryGetValue", value);
    find("CFEqual", isEqual);
    find("CFStringGetCString", textOf);
    find("CFNumberGetValue", numberOf);
  }
  bool isComplete() const { return isComplete_; }

  /// A constant text of the frameworks; null where they have none of that name.
  Object constant(const char* name) const {
    const auto* const place = static_cast<const Object*>(dlsym(library_, name));
    return place == nullptr ? nullptr : *place;
  }

  Object (*makeUrl)(Object allocator, const std::uint8_t* bytes, Index length,
                    std::uint32_t encoding, Object base) = nullptr;
  Object (*systemSettings)() = nullptr;
  Object (*proxiesForUrl)(Object url, Object settings) = nullptr;
  Index (*count)(Object array) = nullptr;
  Object (*at)(Object array, Index index) = nullptr;
  Object (*value)(Object dictionary, Object key) = nullptr;
  Truth (*isEqual)(Object one, Object other) = nullptr;
  Truth (*textOf)(Object text, char* buffer, Index size, std::uint32_t encoding) = nullptr;
  Truth (*numberOf)(Object number, Index type, void* value) = nullptr;

 private:
  template <typename Function>
  void find(const char* name, Function*& function) {
    if (library_ != nullptr) function = reinterpret_cast<Function*>(dlsym(library_, name));
    isComplete_ = isComplete_ && function != nullptr;
  }

  void* library_;
  bool isComplete_ = true;
};

std::string schemeOfType(const CoreNetwork& core, Object type) {
  struct Known {
    const char* name;
    const char* scheme;
  };
  // "HTTPS" is a proxy for such addresses, which itself is spoken to in the clear.
  constexpr std::array<Known, 4> kKnown = {{{"kCFProxyTypeNone", "direct"},
                                            {"kCFProxyTypeHTTP", "http"},
                                            {"kCFProxyTypeHTTPS", "http"},
                                            {"kCFProxyTypeSOCKS", "socks"}}};
  for (const Known& known : kKnown) {
    const Object constant = core.constant(known.name);
    if (type != nullptr && constant != nullptr && core.isEqual(type, constant) != 0)
      return known.scheme;
  }
  return "";
}

std::string answerOf(const CoreNetwork& core, Object proxy) {
  const auto valueOf = [&](const char* key) {
    const Object constant = core.constant(key);
    return constant == nullptr ? nullptr : core.value(proxy, constant);
  };
  std::string answer = schemeOfType(core, valueOf("kCFProxyTypeKey")) + "://";
  const Object host = valueOf("kCFProxyHostNameKey");
  std::array<char, kMaxHost> name = {};
  if (host != nullptr && core.textOf(host, name.data(), name.size(), kUtf8) != 0)
    answer += name.data();
  const Object port = valueOf("kCFProxyPortNumberKey");
  int number = 0;
  if (port != nullptr && core.numberOf(port, kIntNumber, &number) != 0 && number > 0)
    answer += ':' + std::to_string(number);
  return answer;
}

}  // namespace

Proxies proxiesOfSystem(const std::string& url) {
  const CoreNetwork core;
  if (!core.isComplete()) return {};
  // Nothing is given back: the process has nothing else to do.
  const Object settings = core.systemSettings();
  const Object address = core.makeUrl(nullptr, reinterpret_cast<const std::uint8_t*>(url.data()),
                                      static_cast<Index>(url.size()), kUtf8, nullptr);
  if (settings == nullptr || address == nullptr) return {};
  const Object answers = core.proxiesForUrl(address, settings);
  Proxies proxies;
  for (Index i = 0; answers != nullptr && i < core.count(answers); ++i) {
    std::string proxy = proxyOf(answerOf(core, core.at(answers, i)));
    if (!proxy.empty()) proxies.push_back(std::move(proxy));
  }
  return proxies;
}

}  // namespace quillory::update
