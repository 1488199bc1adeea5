#include "platform/gnustep/user_entry.h"

#include <dlfcn.h>
#include <errno.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

// "" as long as nothing is made up.
std::string madeUpName;

// Every text of an entry stands in the caller's `buffer`.
int makeUp(passwd* entry, char* buffer, size_t size, passwd** result) {
  constexpr char kHome[] = "/nonexistent";
  const int length = std::snprintf(buffer, size, "%s%c%s", madeUpName.c_str(), '\0', kHome);
  if (length < 0 || static_cast<size_t>(length) >= size) return ERANGE;
  char* const home = buffer + madeUpName.size() + 1;
  char* const nothing = home + std::strlen(home);
  *entry = {};
  entry->pw_name = buffer;
  entry->pw_passwd = nothing;
  entry->pw_uid = geteuid();
  entry->pw_gid = getegid();
  entry->pw_gecos = nothing;
  entry->pw_dir = home;
  entry->pw_shell = nothing;
  *result = entry;
  return 0;
}

}  // namespace

// Both in the place of the C library's, for every library of the process.

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's are reserved
extern "C" int getpwuid_r(uid_t user, passwd* entry, char* buffer, size_t size, passwd** result) {
  static const auto next = reinterpret_cast<decltype(&getpwuid_r)>(dlsym(RTLD_NEXT, "getpwuid_r"));
  const int error = next(user, entry, buffer, size, result);
  if (madeUpName.empty() || *result != nullptr || user != geteuid()) return error;
  return makeUp(entry, buffer, size, result);
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): as above
extern "C" int getpwnam_r(const char* name, passwd* entry, char* buffer, size_t size,
                          passwd** result) {
  static const auto next = reinterpret_cast<decltype(&getpwnam_r)>(dlsym(RTLD_NEXT, "getpwnam_r"));
  if (madeUpName.empty() || madeUpName != name) return next(name, entry, buffer, size, result);
  return makeUp(entry, buffer, size, result);
}

namespace quillory::platform {

void provideUserEntry() {
  if (getpwuid(geteuid()) == nullptr) madeUpName = "user-" + std::to_string(geteuid());
}

}  // namespace quillory::platform
