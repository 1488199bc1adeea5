#include "formats/update_url.h"

#include <cctype>
#include <cstring>

namespace quillory {
namespace {

std::string withFinalSlash(std::string url) {
  if (!url.empty() && url.back() != '/') url.push_back('/');
  return url;
}

bool isEscape(std::string_view text) {
  const auto isDigit = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
  return text.size() >= 3 && text[0] == '%' && isDigit(text[1]) && isDigit(text[2]);
}

// Whether an address can begin with what `text` begins with.
bool mayStandInUrl(std::string_view text) {
  constexpr std::string_view kNever = "\"<>\\^`{|}";
  const char c = text.front();
  if (c == '%') return isEscape(text);
  return c > ' ' && c <= '~' && kNever.find(c) == std::string_view::npos;
}

}  // namespace

std::string escapedForUrl(std::string_view name) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string escaped;
  for (std::size_t at = 0; at < name.size(); ++at) {
    if (mayStandInUrl(name.substr(at))) {
      escaped.push_back(name[at]);
      continue;
    }
    const auto byte = static_cast<unsigned char>(name[at]);
    escaped.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
  }
  return escaped;
}

bool isInvalidUpdateURL(const char* url) {
  return url != nullptr && std::strncmp(url, kInvalidUpdateURL, sizeof kInvalidUpdateURL - 1) == 0;
}

UpdateUrl::UpdateUrl(const std::string& inTail, const std::optional<std::string>& inParams)
    : isDynamic_(inTail == kDynamicUpdateUrl),
      asItCame_(isDynamic_ ? inParams.value_or("") : inTail),
      inForce_(withFinalSlash(asItCame_)),
      toldOfTail_(isDynamic_ ? inTail : inForce_),
      toldOfParams_(inParams) {
  if (isDynamic_ && inParams) toldOfParams_ = inForce_;
}

}  // namespace quillory
