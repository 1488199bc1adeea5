// Archives of earlier releases: what has once been offered under a name and version stays what it
// is, byte for byte, since caches, deltas and installations go by that.
#pragma once
#include <string>

#include "packager/commands/packing.h"
#include "packager/commands/release_folder.h"
#include "packager/keys/signing_key.h"

namespace quillory::pack {

/// Where the archive of a job lies in the folder, packed for an earlier release; "" when the name
/// and version were never in a list. Throws RejectedInput when they were used for other content or
/// signed by another key, and PackError when the archive itself is gone.
std::string releasedArchive(const ReleaseFolder& folder, const PackingJob& job,
                            const SigningKey& key);

}  // namespace quillory::pack
