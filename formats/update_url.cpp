#include "formats/update_url.h"

#include <cstring>

namespace quillory {
namespace {

std::string withFinalSlash(std::string url) {
  if (!url.empty() && url.back() != '/') url.push_back('/');
  return url;
}

}  // namespace

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
