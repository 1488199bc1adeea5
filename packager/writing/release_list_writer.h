// Writes release lists, as formats/release_list.h reads them; docs/formats/release-list.md has the
// bytes.
#pragma once
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "packager/keys/signing_key.h"

namespace quillory::pack {

/// The list with a signature of each of the keys, one or two, in their order. Throws PackError when
/// a reader that trusts the first of the keys would refuse it, with the reader's reason.
std::string releaseListBytes(const ReleaseList& list, const std::vector<const SigningKey*>& keys,
                             Salt salt);

/// The same as a file, which gets its name when it is complete and flushed.
void writeReleaseList(const std::string& path, const ReleaseList& list,
                      const std::vector<const SigningKey*>& keys, Salt salt);

}  // namespace quillory::pack
