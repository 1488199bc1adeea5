#include "packager/content/jar_entries.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

// Flags that change what an entry's bytes mean: encryption, a patch, strong encryption, a hidden
// directory.
constexpr std::uint32_t kOtherMeanings = 0x2061;

void require(bool holds, const OddJar& otherwise) {
  if (!holds) throw otherwise;
}

// The record at the end of the file, whose comment reaches to it.
std::size_t endRecordIn(std::string_view tail) {
  for (std::size_t at = tail.rfind(kDirectoryEndMark); at != tail.npos;
       at = at == 0 ? tail.npos : tail.rfind(kDirectoryEndMark, at - 1)) {
    if (tail.size() - at >= kDirectoryEndSize &&
        at16(tail, at + 20) == tail.size() - at - kDirectoryEndSize)
      return at;
  }
  throw kNoPlainJar;
}

JarEntry directoryEntry(std::string_view& rest) {
  require(rest.size() >= kDirectoryEntrySize && rest.starts_with(kDirectoryEntryMark), kNoPlainJar);
  JarEntry entry;
  entry.fixed = rest.substr(0, kDirectoryEntrySize);
  const std::size_t name = at16(rest, 28), extra = at16(rest, 30), comment = at16(rest, 32);
  require(rest.size() >= kDirectoryEntrySize + name + extra + comment, kNoPlainJar);
  entry.name = rest.substr(kDirectoryEntrySize, name);
  entry.comment = rest.substr(kDirectoryEntrySize + name + extra, comment);
  rest.remove_prefix(kDirectoryEntrySize + name + extra + comment);
  require(entry.size() != kElsewhere32 && entry.packedSize() != kElsewhere32 &&
              entry.offset() != kElsewhere32,
          kTooLargeJar);
  const bool isKnown = entry.method() == kStoredMethod || entry.method() == kDeflatedMethod;
  require(isKnown && (entry.flags() & kOtherMeanings) == 0, kNoPlainJar);
  require(entry.method() != kStoredMethod || entry.size() == entry.packedSize(), kNoPlainJar);
  return entry;
}

}  // namespace

JarFile::JarFile(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "rb")) {
  if (!file_) throwFileError(path, "cannot be opened", errno);
  if (std::fseek(file_.get(), 0, SEEK_END) == 0) size_ = std::max(std::ftell(file_.get()), 0L);
}

std::string JarFile::read(std::uint64_t offset, std::size_t count) const {
  require(offset <= size() && count <= size() - offset, kNoPlainJar);
  std::string bytes(count, '\0');
  if (std::fseek(file_.get(), static_cast<long>(offset), SEEK_SET) != 0 ||
      std::fread(bytes.data(), 1, count, file_.get()) != count)
    throwFileError(path_, "cannot be read", errno);
  return bytes;
}

JarDirectory readJarDirectory(const JarFile& jar) {
  const auto tailSize = static_cast<std::size_t>(
      std::min<std::uint64_t>(jar.size(), kDirectoryEndSize + kLongestJarComment));
  const std::string tail = jar.read(jar.size() - tailSize, tailSize);
  const std::size_t end = endRecordIn(tail);
  const std::uint32_t count = at16(tail, end + 10);
  JarDirectory directory;
  directory.offset = at32(tail, end + 16);
  directory.comment = tail.substr(end + kDirectoryEndSize);
  require(count != kElsewhere16 && directory.offset != kElsewhere32, kTooLargeJar);
  // One disk, and nothing between the directory and its end, which would mean other offsets.
  const std::uint32_t length = at32(tail, end + 12);
  require(at32(tail, end + 4) == 0 && at16(tail, end + 8) == count &&
              directory.offset + length == jar.size() - tailSize + end,
          kNoPlainJar);
  const std::string bytes = jar.read(directory.offset, length);
  std::string_view rest = bytes;
  for (std::uint32_t left = count; left > 0; --left)
    directory.entries.push_back(directoryEntry(rest));
  require(rest.empty(), kNoPlainJar);
  return directory;
}

std::vector<JarEntry*> inFileOrder(const JarFile& jar, JarDirectory& directory) {
  std::vector<JarEntry*> ordered;
  for (JarEntry& entry : directory.entries) ordered.push_back(&entry);
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const auto* a, const auto* b) { return a->offset() < b->offset(); });
  std::uint64_t free = 0;
  for (JarEntry* entry : ordered) {
    // A program in front of the first entry makes the jar one that can be started.
    require(free == 0 ? entry->offset() == 0 : entry->offset() >= free, kNoPlainJar);
    const std::string header = jar.read(entry->offset(), kLocalHeaderSize);
    require(header.starts_with(kLocalHeaderMark) && at16(header, 26) == entry->name.size(),
            kNoPlainJar);
    require(jar.read(entry->offset() + kLocalHeaderSize, entry->name.size()) == entry->name,
            kNoPlainJar);
    entry->contentAt = entry->offset() + kLocalHeaderSize + at16(header, 26) + at16(header, 28);
    free = entry->contentAt + entry->packedSize();
    require(free <= directory.offset, kNoPlainJar);
  }
  return ordered;
}

}  // namespace quillory::pack
