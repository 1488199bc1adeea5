// The header of a delta: which version it leads from and to, and which files of the older one it
// needs. docs/formats/delta.md has the bytes; update/delta.h undoes a delta.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/delta_format.h"

namespace quillory {

/// An installed file of the older version.
struct BaseFile {
  std::string path;  ///< below the folder of its version
  std::int64_t length = 0;
  std::string sha256;

  bool operator==(const BaseFile&) const = default;
};

/// A file that the newer archive has as it is.
struct DeltaCopy {
  std::int64_t streamLength = 0;  ///< bytes of the stream that come before it
  BaseFile file;

  bool operator==(const DeltaCopy&) const = default;
};

struct DeltaHeader {
  std::string component;
  std::string from;
  std::string to;
  std::string baseSha256;  ///< of the older plain archive
  std::int64_t restoredLength = 0;
  std::string restoredSha256;  ///< of the newer plain archive
  std::int64_t window = 0;     ///< bytes of memory of the LZMA2 stream
  /// One behind the other they are what the stream copies from.
  std::vector<BaseFile> dictionary{};
  std::vector<DeltaCopy> copies{};

  bool operator==(const DeltaHeader&) const = default;
};

/// Memory that it takes to undo it, at most.
inline std::int64_t memoryToUndo(const DeltaHeader& header) {
  return header.window + kDeltaMemoryBesideWindow;
}

struct DeltaHeaderResult {
  std::optional<DeltaHeader> header;
  std::size_t length = 0;  ///< of the header: where the stream begins
  std::string refusal;     ///< why there is none, in words
};

/// Reads the header that the bytes begin with. Taken is only what cannot make more than the header
/// says: the copies and what the stream gives before them are within the restored length, and the
/// dictionary is within the window.
DeltaHeaderResult readDeltaHeaderBytes(std::string_view bytes);
/// The same of a file, a link not followed.
DeltaHeaderResult readDeltaHeader(const std::string& path);

}  // namespace quillory
