// Whether an archive is what its signature says. docs/formats/archive.md has the signature block.
#pragma once
#include <string>

#include "formats/archive_signature.h"
#include "formats/hash_ahead.h"

namespace quillory {

enum class SignatureCheck {
  kHolds,
  kRejected,   ///< what was extracted is deleted
  kNoArchive,  ///< it cannot be opened; nothing is deleted
};

/// Checks the archive at `archivePath` against the signature block at `signatureOffset`, whose text
/// was `signatureHex` when the entries were read. Logs its way; when the signature does not hold,
/// deletes what is in `destDir`. A null key rejects every signature. `begun` (may be null) is what
/// of the archive has been hashed already. An archive that is shorter than what is signed is waited
/// for.
SignatureCheck checkSignature(const std::string& archivePath, const std::string& destDir,
                              long signatureOffset, const std::string& signatureHex, Rsa_key* key,
                              const HashedPart* begun = nullptr);

/// Deletes what is in the folder, whatever its name, and leaves the folder.
void emptyFolder(const std::string& folder);

}  // namespace quillory
