// Extraction of whole archives, with the check of what they are signed with. extraction.h has the
// result, and what is true of every extraction.
#pragma once
#include <string>

#include "formats/archive_trust.h"
#include "formats/extraction.h"
#include "formats/hash_ahead.h"

namespace quillory {

/// Extracts a whole archive, verifies it where it is signed, and deletes it; after a failure it
/// stays, and so do the entries before. kEndOfArchive, also when the signature does not hold: then
/// `destDir` is empty afterwards.
///
/// Hardened, an archive that is not signed from its first byte to its last, or that is not what is
/// expected, is kArchiveRejected instead, and no program runs that an archive holds before its
/// signature was found to hold. The archive has to be complete.
///
/// `begun` is a beginning of the digest that the signature is checked with, made while the archive
/// was written.
ExtractionResult extractAllOf(const char* unpack200Tool, const std::string& archivePath,
                              const std::string& destDir, const ArchiveTrust& trust,
                              const BegunDigest& begun = {});

}  // namespace quillory
