// Where this program lies, and with it what it packs: the launcher, lzma64, the updater.
#pragma once
#include <string>

namespace quillory::pack {

/// The folder of the running executable, links resolved; "" when it cannot be told.
std::string programFolder();

}  // namespace quillory::pack
