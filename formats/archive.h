// Archives ("p2"): record streams of folders and files with their bytes inline, closed by an empty
// record or by a signature block. docs/formats/archive.md has the bytes. These functions end the
// process where an extraction cannot go on; those of extraction.h, which they stand on, say why.
// They are for programs outside of this tree; the launcher itself calls those of extraction.h.
#pragma once
#include <cstdio>

#include "formats/archive_signature.h"
#include "formats/extraction.h"
#include "formats/hash_ahead.h"

namespace quillory {

inline constexpr int kEndOfArchive = -1;

/// Extracts one entry. `lzmaTool` null: no ".l2" and ".p2" handling. `unpack200Tool` may be null
/// where no pack200 entry is expected. `*signatureOffset` is -1 on entry.
///
/// 0 after a folder, a file or a skipped empty file; kEndOfArchive at the end, after a signature
/// block (whose offset and text, to be released with free(), it hands out), or when
/// `*signatureOffset` is not -1. `signatureHex` may be null: the text is then skipped.
///
/// Ends the process with status 1 when the entry is refused, or its file cannot be created or
/// written to its end; with 101 when unpack200 produced nothing.
int extractArchiveFileCheckSignature(const char* lzmaTool, const char* unpack200Tool,
                                     const char* destDir, std::FILE* stream, long* signatureOffset,
                                     char** signatureHex, Rsa_key* key);

/// The same for streams that hold no signature block.
int extractArchiveFileIgnoreSignature(const char* lzmaTool, const char* unpack200Tool,
                                      const char* destDir, std::FILE* stream, Rsa_key* key);

/// Extracts a whole archive, verifies it where it is signed, and deletes it in every case. Returns
/// 0; when the signature does not hold, `destDir` is empty afterwards. Ends the process with status
/// 1 when the archive cannot be opened, and where the extraction of an entry does.
int extractArchive(const char* unpack200Tool, const char* archivePath, const char* destDir,
                   Rsa_key* key);

/// Checks the archive at `archivePath` against the signature block at `signatureOffset`, whose text
/// was `signatureHex` when the entries were read, as checkSignature() does. Ends the process with
/// status 1 when the archive cannot be opened.
bool verifyArchive(const char* archivePath, const char* destDir, long signatureOffset,
                   const char* signatureHex, Rsa_key* key, const HashedPart* begun = nullptr);

}  // namespace quillory
