// Two versions of an application as plain archives, and the older one as it is installed.
#pragma once
#include <map>
#include <string>

#include "tests/formats/archive_parts.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

using ArchiveFiles = std::map<std::string, std::string>;

inline std::string archiveOf(const ArchiveFiles& files) {
  std::string bytes;
  for (const auto& [path, content] : files) bytes += fileEntry(path, content);
  return bytes + endOfArchive();
}

inline void installInto(const std::string& folder, const ArchiveFiles& files) {
  for (const auto& [path, content] : files) writeFile(folder + '/' + path, content);
}

/// Bytes that cannot be compressed, the same for each seed.
inline std::string noise(unsigned seed, std::size_t length) {
  std::string bytes;
  for (std::size_t i = 0; i < length; ++i) {
    seed = seed * 1664525 + 1013904223;
    bytes.push_back(static_cast<char>(seed >> 24));
  }
  return bytes;
}

}  // namespace quillory::testing
