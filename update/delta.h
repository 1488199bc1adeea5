// Undoes a delta: makes the plain archive of a version out of the installed files of an older one.
// docs/formats/delta.md has the bytes.
#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include "formats/delta_header.h"

namespace quillory::update {

/// What is to be made, from what. Names and hash are those of a signed release list: a delta that
/// says something else is not the one that is named there.
struct DeltaTask {
  std::string delta;            ///< path of the file, which has the length and hash of the list
  std::string installedFolder;  ///< of the older version
  std::string home{};           ///< of a runtime, see BaseFiles; else ""
  std::string out;              ///< path of the archive; replaced when it is complete, not before
  std::string component{};
  std::string from{};
  std::string to{};
  std::int64_t restoredLength = 0;
  std::string restoredSha256{};
  /// Bytes of memory that it may take, see memoryToUndo().
  std::int64_t memoryLimit = kMaxDeltaWindow + kDeltaMemoryBesideWindow;
  /// Told how many bytes of the archive are there; false stops. May be empty.
  std::function<bool(std::int64_t)> progress{};
};

enum class DeltaEnd {
  kRestored,
  kBaseChanged,    ///< what is installed is not what the delta leads from: take the whole archive
  kUnusable,       ///< the delta is damaged, or not the one that is meant: take the whole archive
  kTooMuchMemory,  ///< take the whole archive
  kNotWritten,  ///< the disk is full, or the folder is not ours: the whole archive fares no better
  kCancelled,
};

struct DeltaResult {
  DeltaEnd end = DeltaEnd::kRestored;
  std::string reason;  ///< in words, naming the file; "" when it is restored

  bool isRestored() const { return end == DeltaEnd::kRestored; }
};

/// Restores the archive, byte for byte, with the length and the SHA-256 of the task, or leaves
/// nothing and what was there before. Takes the memory of the delta's window and less than
/// kDeltaMemoryBesideWindow. Not flushed to the disk: an archive is a step on the way. No process
/// is ended, and nothing is logged.
DeltaResult undoDelta(const DeltaTask& task);

}  // namespace quillory::update
