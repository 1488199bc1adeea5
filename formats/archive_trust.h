// What an archive must prove before it is taken for what it should be. A bundle that is not
// hardened asks only that a signature, where there is one, holds; a hardened one that the archive
// is signed from its first byte to its last and names itself. docs/formats/archive.md has the
// bytes.
#pragma once
#include <optional>
#include <string>

#include "formats/archive_identity.h"
#include "formats/archive_signature.h"

namespace quillory {

/// What is asked of an archive.
struct ArchiveTrust {
  Rsa_key* key = nullptr;   ///< null: no signature holds; borrowed
  bool isHardened = false;  ///< the parameter `hardened`
  /// Only asked when hardened: what the archive must say that it is, on which platform it is to
  /// run. Nothing: it may be any that says what it is.
  std::optional<ArchiveIdentity> expected = std::nullopt;
};

/// The signature block with which an archive ends.
struct MetSignature {
  long offset = 0;  ///< where it says that it stands
  std::string hex;

  bool operator==(const MetSignature&) const = default;
};

/// What a look through an archive has found, before any of it is extracted or its signature is
/// checked.
struct ArchiveInspection {
  /// Why a hardened bundle refuses it, in words; "" when its signature decides.
  std::string refusal;
  MetSignature signature;
  std::optional<ArchiveIdentity> identity;
  /// It has entries for unpack200, a program that may come out of the same archive: that must not
  /// run before the signature is known to hold.
  bool needsUnpack200 = false;
};

/// Looks through the archive at `path`, which is complete: one that ends inside an entry is refused
/// and not waited for. Nothing when it cannot be opened.
std::optional<ArchiveInspection> inspectArchive(const std::string& path, const ArchiveTrust& trust);

}  // namespace quillory
