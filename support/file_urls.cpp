#include "support/file_urls.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace quillory {
namespace {

constexpr std::string_view kScheme = "file:";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";
constexpr std::string_view kLocalHost = "localhost";

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

std::optional<unsigned> hexValue(char digit) {
  const std::size_t value =
      kHexDigits.find(static_cast<char>(std::toupper(static_cast<unsigned char>(digit))));
  if (value == kHexDigits.npos) return std::nullopt;
  return static_cast<unsigned>(value);
}

std::optional<std::string> withoutEscapes(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      plain += text[at];
      continue;
    }
    if (text.size() - at < 3) return std::nullopt;
    const auto high = hexValue(text[at + 1]);
    const auto low = hexValue(text[at + 2]);
    if (!high || !low) return std::nullopt;
    plain += static_cast<char>(*high << 4 | *low);
    at += 2;
  }
  return plain;
}

bool standsForItself(unsigned char c) {
  constexpr std::string_view kOthers = "/-._~!$&'()*+,;=:@";
  return c < 0x80 && (std::isalnum(c) != 0 || kOthers.find(static_cast<char>(c)) != kOthers.npos);
}

}  // namespace

std::optional<std::string> pathOfFileUrl(std::string_view url) {
  if (!equalsIgnoringCase(url.substr(0, kScheme.size()), kScheme)) return std::nullopt;
  url.remove_prefix(kScheme.size());
  if (url.starts_with("//")) {
    const std::string_view host = url.substr(2, url.find('/', 2) - 2);
    if (!host.empty() && !equalsIgnoringCase(host, kLocalHost)) return std::nullopt;
    url.remove_prefix(2 + host.size());
  }
  std::optional<std::string> path = withoutEscapes(url.substr(0, url.find_first_of("?#")));
  if (!path || !path->starts_with('/') || path->find('\0') != path->npos) return std::nullopt;
  return path;
}

std::string fileUrlOf(std::string_view path) {
  std::string url = "file://";
  for (const char byte : path) {
    const auto c = static_cast<unsigned char>(byte);
    if (standsForItself(c)) {
      url += byte;
    } else {
      url += {'%', kHexDigits[c >> 4], kHexDigits[c & 15]};
    }
  }
  return url;
}

}  // namespace quillory
