// Clocks, what the machine has, and which system this passes for.
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

/// macOS 14: an image asks before it calls what only newer systems have.
constexpr std::uint32_t kTheirVersion = 14 << 16;
constexpr std::string_view kTheirVersionText = "14.0";

int theirClockGettime(int clock, timespec* time) {
  switch (clock) {
    case 0:
      return clock_gettime(CLOCK_REALTIME, time);
    case 4:
    case 5:
      return clock_gettime(CLOCK_MONOTONIC_RAW, time);
    case 6:
    case 8:
    case 9:
      return clock_gettime(CLOCK_MONOTONIC, time);
    case 12:
      return clock_gettime(CLOCK_PROCESS_CPUTIME_ID, time);
    case 16:
      return clock_gettime(CLOCK_THREAD_CPUTIME_ID, time);
  }
  fail("clock_gettime: clock", clock);
}

struct TheirTime {
  long seconds;
  std::int32_t micros;
};

int theirGettimeofday(TheirTime* time, void*) {
  timeval ours;
  const int result = gettimeofday(&ours, nullptr);
  if (time != nullptr) *time = {ours.tv_sec, static_cast<std::int32_t>(ours.tv_usec)};
  return result;
}

long theirSysconf(int name) {
  switch (name) {
    case 1:
      return sysconf(_SC_ARG_MAX);
    case 3:
      return sysconf(_SC_CLK_TCK);
    case 5:
      return sysconf(_SC_OPEN_MAX);
    case 29:
      return sysconf(_SC_PAGESIZE);
    case 57:
      return sysconf(_SC_NPROCESSORS_CONF);
    case 58:
      return sysconf(_SC_NPROCESSORS_ONLN);
    case 71:
      return sysconf(_SC_GETPW_R_SIZE_MAX);
    case 200:
      return sysconf(_SC_PHYS_PAGES);
  }
  fail("sysconf: name", name);
}

int theirSysctlbyname(const char* name, void* value, std::size_t* size, const void* set,
                      std::size_t) {
  if (set != nullptr) fail("sysctlbyname: setting of", name);
  if (std::string_view(name) != "kern.osproductversion") fail("sysctlbyname:", name);
  const std::size_t needed = kTheirVersionText.size() + 1;
  if (value != nullptr) {
    if (*size < needed) {
      errno = ENOMEM;
      return -1;
    }
    std::memcpy(value, kTheirVersionText.data(), needed);
  }
  *size = needed;
  return 0;
}

struct TheirBuildVersion {
  std::uint32_t platform;
  std::uint32_t version;
};

bool theirVersionCheck(std::uint32_t count, const TheirBuildVersion* versions) {
  constexpr std::uint32_t kMacOS = 1;
  for (std::uint32_t i = 0; i < count; ++i)
    if (versions[i].platform == kMacOS && versions[i].version > kTheirVersion) return false;
  return true;
}

[[noreturn]] void noLazyBinding() { fail("a symbol that was not bound at the start"); }

}  // namespace

Symbols machineSymbols() {
  static const Symbol kSymbols[] = {
      {"__availability_version_check", code(theirVersionCheck)},
      {"_clock_gettime", code(theirClockGettime)},
      {"_gettimeofday", code(theirGettimeofday)},
      {"_sysconf", code(theirSysconf)},
      {"_sysctlbyname", code(theirSysctlbyname)},
      {"dyld_stub_binder", code(noLazyBinding)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
