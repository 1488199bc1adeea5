// In the place of CFNetwork and of what it needs of CoreFoundation, for
// system_proxies_macos_test.cpp: settings that name proxies for some addresses.
#include <cstdint>
#include <cstdio>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Thing {
  std::string text{};
  int number = 0;
  std::vector<const Thing*> items{};
  std::vector<std::pair<const Thing*, const Thing*>> entries{};
};

// Kept to the end of the process, as nobody gives anything back.
const Thing* made(Thing thing) {
  static std::deque<Thing> all;
  return &all.emplace_back(std::move(thing));
}
const Thing* madeText(const std::string& text) { return made({.text = text}); }

constexpr std::uint32_t kUtf8 = 0x08000100;
constexpr long kIntNumber = 9;

}  // namespace

extern "C" {

extern const Thing* const kCFProxyTypeKey = madeText("type");
extern const Thing* const kCFProxyHostNameKey = madeText("host");
extern const Thing* const kCFProxyPortNumberKey = madeText("port");
extern const Thing* const kCFProxyTypeNone = madeText("none");
extern const Thing* const kCFProxyTypeHTTP = madeText("http");
extern const Thing* const kCFProxyTypeHTTPS = madeText("https");
extern const Thing* const kCFProxyTypeSOCKS = madeText("socks");
extern const Thing* const kCFProxyTypeAutoConfigurationURL = madeText("script");

const Thing* CFURLCreateWithBytes(const void*, const std::uint8_t* bytes, long length,
                                  std::uint32_t encoding, const void*) {
  const std::string text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
  return encoding == kUtf8 && text.find(' ') == text.npos ? madeText(text) : nullptr;
}

const Thing* CFNetworkCopySystemProxySettings() { return madeText("settings"); }

const Thing* CFNetworkCopyProxiesForURL(const Thing* url, const Thing* settings) {
  if (settings->text != "settings") return nullptr;
  const auto proxy = [](const Thing* type, const char* host, int port) {
    Thing its;
    // Equal, and not the same.
    its.entries = {{kCFProxyTypeKey, madeText(type->text)}};
    if (port > 0) {
      its.entries.emplace_back(kCFProxyHostNameKey, madeText(host));
      its.entries.emplace_back(kCFProxyPortNumberKey, made({.number = port}));
    }
    return made(its);
  };
  Thing list;
  if (url->text == "https://app.example/") {
    list.items = {proxy(kCFProxyTypeHTTPS, "web.example", 3128),
                  proxy(kCFProxyTypeSOCKS, "socks.example", 1080), proxy(kCFProxyTypeNone, "", 0)};
  } else if (url->text == "http://script.example/") {
    list.items = {proxy(kCFProxyTypeAutoConfigurationURL, "", 0),
                  proxy(kCFProxyTypeHTTP, "plain.example", 80)};
  }
  return made(list);
}

long CFArrayGetCount(const Thing* array) { return static_cast<long>(array->items.size()); }

const Thing* CFArrayGetValueAtIndex(const Thing* array, long index) {
  return array->items.at(static_cast<std::size_t>(index));
}

unsigned char CFEqual(const Thing* one, const Thing* other) { return one->text == other->text; }

const Thing* CFDictionaryGetValue(const Thing* dictionary, const Thing* key) {
  for (const auto& [its, value] : dictionary->entries)
    if (its->text == key->text) return value;
  return nullptr;
}

unsigned char CFStringGetCString(const Thing* text, char* buffer, long size,
                                 std::uint32_t encoding) {
  if (encoding != kUtf8 || static_cast<long>(text->text.size()) >= size) return 0;
  std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text->text.c_str());
  return 1;
}

unsigned char CFNumberGetValue(const Thing* number, long type, void* value) {
  if (type != kIntNumber) return 0;
  *static_cast<int*>(value) = number->number;
  return 1;
}

}  // extern "C"
