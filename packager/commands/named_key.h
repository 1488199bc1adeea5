// The signing key that a configuration names.
#pragma once
#include "packager/config/config.h"

namespace quillory::pack {

/// Throws RejectedInput, at the line of signing.key, for a file that holds no such key.
SigningKey namedKey(const Config& config);

}  // namespace quillory::pack
