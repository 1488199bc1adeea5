// The key that the archives of a bundle are signed with, and what their launcher asks of it.
#pragma once
#include <optional>

#include "packager/config/config.h"
#include "packager/keys/signing_key.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// The key that the configuration names; none, with a warning, when the bundle is to be unsigned.
/// Throws RejectedInput, at the line of signing.key, when there is none, when the file holds no
/// such key, or one whose signatures the launcher does not take. A key file that other people of
/// this machine can read is reported.
std::optional<SigningKey> bundleKey(const Config& config, bool isUnsigned, Reporter& reporter);

/// Whether the bundle becomes a hardened one: where nobody said otherwise, when it has a key; a
/// note tells of one that has none. Throws RejectedInput where a hardened one is asked for without
/// a key, whose archives its launcher would refuse.
bool isToBeHardened(const Config& config, bool hasKey, Reporter& reporter);

}  // namespace quillory::pack
