// Makes the key that signs archives.
#pragma once
#include <string>

#include "packager/commands/command.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// Writes a new private key to `path`, readable by its owner only. Throws PackError when there is a
/// file already: a lost key cannot be replaced.
void makeKeyFile(const std::string& path, int bits, Reporter& reporter);

/// "keygen": makes it, and says how to keep it.
Command keygenCommand();

}  // namespace quillory::pack
