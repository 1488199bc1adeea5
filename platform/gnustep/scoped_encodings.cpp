#include "platform/gnustep/scoped_encodings.h"

#include <dlfcn.h>
#include <errno.h>
#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <string_view>

namespace {

thread_local bool areOthersHidden = false;

bool isAlwaysThere(std::string_view encoding) {
  return encoding.starts_with("UTF-8") || encoding.starts_with("UTF-16") ||
         encoding.starts_with("ASCII");
}

bool hasLocaleOtherEncoding() {
  const locale_t users = newlocale(LC_CTYPE_MASK, "", nullptr);
  if (users == nullptr) return false;  // An unknown one counts as "C".
  const std::string_view encoding = nl_langinfo_l(CODESET, users);
  const bool isOther = encoding != "UTF-8" && encoding != "ANSI_X3.4-1968";
  freelocale(users);
  return isOther;
}

}  // namespace

// In the place of the C library's, for every library of the process.
extern "C" iconv_t iconv_open(const char* to, const char* from) {
  if (areOthersHidden && !(isAlwaysThere(to) && isAlwaysThere(from))) {
    errno = EINVAL;
    return reinterpret_cast<iconv_t>(-1);
  }
  static const auto next = reinterpret_cast<decltype(&iconv_open)>(dlsym(RTLD_NEXT, "iconv_open"));
  return next(to, from);
}

namespace quillory::platform {

ScopedEncodings::ScopedEncodings() { areOthersHidden = !hasLocaleOtherEncoding(); }

ScopedEncodings::~ScopedEncodings() { areOthersHidden = false; }

}  // namespace quillory::platform
