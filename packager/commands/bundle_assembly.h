// An application bundle and the files for the update URL, made of packed parts.
#pragma once
#include <string>

#include "packager/commands/output_place.h"
#include "packager/commands/packed_parts.h"
#include "packager/config/config.h"
#include "packager/content/bundle_tools.h"

namespace quillory::pack {

/// Makes both in `workFolder`, which has to be there. `publicKey` is the hexadecimal public half of
/// the key that the parts are signed with; "" for unsigned ones. Throws PackError.
MadeFiles assembleBundle(const Config& config, const BundleTools& tools, const PackedParts& parts,
                         const std::string& publicKey, const std::string& workFolder);

}  // namespace quillory::pack
