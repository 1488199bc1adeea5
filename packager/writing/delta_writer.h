// Makes deltas, as formats/delta_header.h and update/delta.h read them; docs/formats/delta.md has
// the bytes.
#pragma once
#include <cstdint>
#include <string>

#include "formats/delta_format.h"

namespace quillory::pack {

struct DeltaRequest {
  std::string role;        ///< updater, runtime or application
  std::string component;   ///< the name that its version folder begins with
  std::string from;        ///< the older version
  std::string to;          ///< the newer version
  std::string oldArchive;  ///< path of the older archive, plain (".p2")
  std::string newArchive;  ///< path of the newer archive, plain
  /// Bytes of the newer archive as it is served: a delta of more than half of them is not made.
  std::int64_t wholeLength = 0;
  /// The largest window, at most kMaxDeltaWindow; what undoing takes beside it is not counted in.
  std::int64_t mostMemory = kMaxDeltaWindow;
};

struct MadeDelta {
  bool isMade = false;
  std::string reason{};      ///< why none was made, in words; "" when it was
  std::string baseSha256{};  ///< of the older archive
  std::int64_t length = 0;
  std::string sha256{};
  std::int64_t memory = 0;  ///< what the release list calls "Delta Memory"
};

/// Writes the delta to `path`, where it appears when it is complete; when none is worth while,
/// nothing is written, and what stood there stays. The same archives give the same bytes. Throws
/// PackError when an archive cannot be read or is damaged, or the file not be written.
MadeDelta writeDelta(const DeltaRequest& request, const std::string& path);

}  // namespace quillory::pack
