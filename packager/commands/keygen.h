// Makes the key that signs archives.
#pragma once
#include <string>

#include "packager/commands/command.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// Writes a new private key to `path`, readable by its owner only. Throws PackError when there is a
/// file already: a lost key cannot be replaced.
void makeKeyFile(const std::string& path, int bits, Reporter& reporter);

/// Where the public half of a reserve key goes: "reserve.pem" has it in "reserve.public.pem".
std::string publicHalfPath(const std::string& path);

/// The same for the second key, which lies in a safe until the first one is lost: its public half
/// is written beside it, for reserve-key of [update]. Throws PackError when either file is there.
void makeReserveKeyFiles(const std::string& path, int bits, Reporter& reporter);

/// "keygen": makes it, and says how to keep it.
Command keygenCommand();

}  // namespace quillory::pack
