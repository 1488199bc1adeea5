// Extraction of archives entry by entry, with a result that says what went wrong and where, for
// whoever goes on then. docs/formats/archive.md has the bytes; archive.h has the functions that end
// the process. Each step is in the log, failures too. Not reentrant: all extractions share one copy
// buffer.
//
// Nothing is written outside the destination folder: an entry whose path holds a ".." component or
// does not fit is refused before anything of it is written, and a link that stands at an output
// path, or on the way to it, is replaced, never followed.
#pragma once
#include <cstdio>
#include <optional>
#include <string>

#include "formats/archive_trust.h"

namespace quillory {

/// Set to 1 once a pack200 entry has been written, to be unpacked.
extern int up200modified;

/// The programs that entries may need, by their paths; both may be null. Without `lzma` suffixes
/// mean nothing; `unpack200` may be null where no pack200 entry is expected. Borrowed.
struct ExtractionTools {
  const char* lzma = nullptr;
  const char* unpack200 = nullptr;
};

/// What a step of an extraction came to.
enum class ExtractionEnd {
  kEntryDone,     ///< a folder, a file or a skipped empty file: the next entry follows
  kEndOfArchive,  ///< the empty record, or a signature block
  // The others are failures.
  kNoArchive,       ///< it cannot be opened
  kEntryRefused,    ///< its path or length may not be what it is
  kFileNotCreated,  ///< the file's place is taken, or may not be written to
  kFileNotWritten,  ///< the disk is full, say; nothing of the file is left
  kNotUnpacked,     ///< unpack200 left nothing
  kNotRead,         ///< the archive itself cannot be read on: its disk is failing, say
  /// Only of a hardened bundle: the archive does not prove that it is what it should be. The
  /// destination folder is empty, and the archive is deleted.
  kArchiveRejected,
};

/// What came of the signature of a whole archive.
enum class ArchiveVerdict {
  kNone,  ///< no archive was read to its end
  kUnsigned,
  kVerified,
  kRejected,  ///< the destination folder is empty
};

struct ExtractionResult {
  ExtractionEnd end = ExtractionEnd::kEntryDone;
  // Of a failure; else empty.
  std::string entry{};   ///< the entry's path as the archive has it; "" for the whole archive
  long length = 0;       ///< what the entry says that it has
  std::string path{};    ///< the file that could not be read, written or made
  std::string reason{};  ///< in words, without a line end; also of an archive that was rejected
  /// Of the archive that was extracted; of a single entry, that of the archive which it was.
  ArchiveVerdict verdict = ArchiveVerdict::kNone;

  bool isFailure() const {
    return end != ExtractionEnd::kEntryDone && end != ExtractionEnd::kEndOfArchive;
  }
};

/// The status with which a launcher ends after this failure: 101 where unpack200 left nothing,
/// else 1.
int exitStatusOf(const ExtractionResult& failure);

/// Extracts the entry at which `stream` stands into `destDir`, which is there. With the LZMA tool a
/// file that is an archive itself, compressed or not, is extracted into the same folder as
/// extractAllOf() of whole_archive.h does it. `signature` gets a signature block; once it has one,
/// that is the end.
///
/// A stream that ends inside a file's bytes is waited for, for ever: a log line says so.
ExtractionResult extractEntry(const ExtractionTools& tools, const std::string& destDir,
                              std::FILE* stream, std::optional<MetSignature>& signature,
                              const ArchiveTrust& trust);

}  // namespace quillory
