// Archives ("p2"): record streams of folders and files with their bytes inline, closed by an empty
// record or by a signature block. docs/formats/archive.md has the bytes. Not reentrant: all
// extractions share one copy buffer.
//
// Nothing is written outside the destination folder: an entry whose path holds a ".." component or
// does not fit ends the process with status 1 before anything of it is written, and a link that
// stands at an output path, or on the way to it, is replaced, never followed.
#pragma once
#include <cstdio>

#include "formats/archive_signature.h"

namespace quillory {

inline constexpr int kEndOfArchive = -1;

/// Set to 1 once a pack200 entry has been unpacked.
extern int up200modified;

/// Extracts one entry. `lzmaTool` null: no ".l2" and ".p2" handling. `unpack200Tool` may be null
/// where no pack200 entry is expected. `*signatureOffset` is -1 on entry.
///
/// 0 after a folder, a file or a skipped empty file; kEndOfArchive at the end, after a signature
/// block (whose offset and text, to be released with free(), it hands out), or when
/// `*signatureOffset` is not -1. `signatureHex` may be null: the text is then skipped.
///
/// Ends the process with status 1 when a file cannot be created or written to its end, or when its
/// length is negative; with 101 when unpack200 produced nothing. A stream that ends inside a file's
/// bytes is waited for, for ever: a log line says so.
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

}  // namespace quillory
