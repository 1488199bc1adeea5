// The archive and its entries, once, for who reads, writes and shows them. docs/formats/archive.md
// has the bytes. What a compression beside LZMA needs begins in kCompressions.
#pragma once
#include <array>
#include <string>
#include <string_view>

#include "formats/record_stream.h"

namespace quillory {

/// An entry: its type (an empty one ends the archive) and its path; unless it is a folder also the
/// length of the content, which follows.
inline constexpr char kEntryTypeRecord[] = "Archive File Type";
inline constexpr char kEntryPathRecord[] = "Archive File Path";
inline constexpr char kEntryLengthRecord[] = "Archive File Length";

/// Types. Every other number is a plain file, too.
inline constexpr long kFileEntry = 0;
inline constexpr long kFolderEntry = 1;
inline constexpr long kPack200Entry = 2;

/// Paths that begin so are kept for blocks that are no files. The signature is the only one so far.
inline constexpr std::string_view kSpecialBlockPrefix = "qyArcSpBlock_";
inline constexpr std::string_view kSignatureBlockPath = "qyArcSpBlock_DigitalSignature1";

/// The signature block has two records in the place of content: where it stands, and its text.
inline constexpr char kSignaturePlaceRecord[] = "Signature Length";
inline constexpr char kSignatureHexRecord[] = "Signature Hex";
/// What an extraction reads of the text, and what the check after it reads: that is how long the
/// text of a signature may be.
inline constexpr int kSignatureHexCapacity = 8192;
inline constexpr int kCheckedHexCapacity = 4096;

/// What the name of an archive ends in; a pack200 entry is put beside its final path under it, too.
inline constexpr std::string_view kArchiveSuffix = ".p2";

/// A way to compress a file: what is added to its name, and the program of the tail that undoes it,
/// called with "d", the compressed and the plain path.
struct Compression {
  std::string_view suffix;
  const char* tool;
};
inline constexpr std::array<Compression, 1> kCompressions = {{{".l2", "lzma64"}}};
/// The one that archives are packed with.
inline constexpr const Compression& kPackedWith = kCompressions[0];

/// The one that `path` is named after; null for a plain file.
constexpr const Compression* compressionOf(std::string_view path) {
  for (const Compression& compression : kCompressions)
    if (path.ends_with(compression.suffix)) return &compression;
  return nullptr;
}

/// `path` without the suffix of its compression, where it has one.
constexpr std::string_view withoutCompression(std::string_view path) {
  const Compression* compression = compressionOf(path);
  if (compression != nullptr) path.remove_suffix(compression->suffix.size());
  return path;
}

/// Whether that is the name of an archive, compressed or not.
constexpr bool isArchiveName(std::string_view path) {
  return withoutCompression(path).ends_with(kArchiveSuffix);
}

/// "<name>.p2", and that packed: "<name>.p2.l2".
inline std::string archiveName(const std::string& name) {
  return name + std::string(kArchiveSuffix);
}
inline std::string packedArchiveName(const std::string& name) {
  return archiveName(name) + std::string(kPackedWith.suffix);
}

}  // namespace quillory
