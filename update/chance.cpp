#include "update/chance.h"

#include <sys/random.h>
#include <unistd.h>

#include <cstdio>

#include "support/clock.h"

namespace quillory::update {
namespace {

std::uint64_t nextOfSystem() {
  std::uint64_t number = 0;
  if (getentropy(&number, sizeof number) == 0) return number;
  // Without it the clock and the process have to do: nothing that must be kept secret hangs on it.
  return getCurrentTimeMillis() * 6364136223846793005ull + static_cast<std::uint64_t>(getpid());
}

}  // namespace

ChanceCalls chanceCalls{nextOfSystem};

std::string newDraw() {
  char digits[33];
  std::snprintf(digits, sizeof digits, "%016llx%016llx",
                static_cast<unsigned long long>(chanceCalls.next()),
                static_cast<unsigned long long>(chanceCalls.next()));
  return digits;
}

double anyPart() { return static_cast<double>(chanceCalls.next() >> 11) / 9007199254740992.0; }

}  // namespace quillory::update
