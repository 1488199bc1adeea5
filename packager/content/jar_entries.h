// The entries of a jar as they lie in the file, for who makes another jar of them. A jar in which
// anything is not as jars usually are is left to its owner: readers differ in what they make of it.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "packager/content/zip_fields.h"
#include "support/owned.h"

namespace quillory::pack {

struct JarEntry {
  std::string fixed;  ///< of the directory, kDirectoryEntrySize bytes
  std::string name;
  std::string comment;
  std::uint64_t contentAt = 0;  ///< in the file

  std::uint32_t flags() const { return at16(fixed, 8); }
  std::uint32_t method() const { return at16(fixed, 10); }
  std::uint32_t crc() const { return at32(fixed, 16); }
  std::uint32_t packedSize() const { return at32(fixed, 20); }
  std::uint32_t size() const { return at32(fixed, 24); }
  std::uint32_t offset() const { return at32(fixed, 42); }
  bool isFolder() const { return name.ends_with('/'); }
};

/// Why a jar stays as it is, in words. Thrown by what follows.
struct OddJar {
  const char* why;
};
inline constexpr OddJar kNoPlainJar = {"it is no plain jar"};
inline constexpr OddJar kTooLargeJar = {"it has too many or too long entries"};

/// A number of this size stands for one that is in a longer form elsewhere.
inline constexpr std::uint32_t kElsewhere16 = 0xFFFF;
inline constexpr std::uint32_t kElsewhere32 = 0xFFFFFFFF;

/// A jar, open for reading.
class JarFile {
 public:
  /// Throws PackError when it cannot be opened.
  explicit JarFile(const std::string& path);

  std::uint64_t size() const { return static_cast<std::uint64_t>(size_); }
  /// Throws kNoPlainJar beyond the end, and PackError when the file cannot be read.
  std::string read(std::uint64_t offset, std::size_t count) const;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  OwnedFile file_;
  long size_ = 0;
};

struct JarDirectory {
  std::vector<JarEntry> entries;  ///< in the order of the directory
  std::string comment;
  std::uint64_t offset = 0;
};

/// The directory of a jar, every entry stored or deflated, none encrypted, nothing beyond 4 GiB.
JarDirectory readJarDirectory(const JarFile& jar);

/// Its entries as they follow one another in the file, from its first byte, each with the place of
/// its content filled in; none lies within another one.
std::vector<JarEntry*> inFileOrder(const JarFile& jar, JarDirectory& directory);

}  // namespace quillory::pack
