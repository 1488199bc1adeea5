// Where this program lies, and with it what it packs: the launcher, lzma64, the updater.
#pragma once
#include <string>

#include "packager/reading/target.h"

namespace quillory::pack {

/// The folder of the running executable, links resolved; "" when it cannot be told.
std::string programFolder();

/// The system that this program runs on.
Target nativeTarget();

}  // namespace quillory::pack
