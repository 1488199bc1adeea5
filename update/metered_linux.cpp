#include <unistd.h>

#include <string>

#include "support/program.h"
#include "update/metered.h"

namespace quillory::update {
namespace {

constexpr char kBusctl[] = "/usr/bin/busctl";
// NM_METERED_YES and NM_METERED_GUESS_YES.
constexpr char kYes[] = "u 1\n";
constexpr char kGuessYes[] = "u 3\n";

bool isMetered() {
  if (access(kBusctl, X_OK) != 0) return false;
  // What it says of a system without a bus, or without that service, is no answer.
  ProgramOptions quietly;
  quietly.output = ProgramOutput::kBothCaptured;
  const ProgramResult asked = runProgram(
      {kBusctl, "--system", "--timeout=2", "get-property", "org.freedesktop.NetworkManager",
       "/org/freedesktop/NetworkManager", "org.freedesktop.NetworkManager", "Metered"},
      quietly);
  return asked.output == kYes || asked.output == kGuessYes;
}

}  // namespace

MeteredCalls meteredCalls{isMetered};

}  // namespace quillory::update
