#include "packager/content/stored_jar.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "packager/bytes/byte_sinks.h"
#include "packager/content/jar_entries.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

constexpr std::uint32_t kNameIsUtf8 = 0x0800;
constexpr std::uint32_t kVersionForFiles = 10;
constexpr std::uint32_t kVersionForFolders = 20;
constexpr char kModuleDescriptor[] = "module-info.class";

// Which entries are written.
using EntryTest = bool (*)(const JarEntry&);

// Takes the content of an entry, piece by piece, and judges it by its length and checksum.
class ContentCheck {
 public:
  ContentCheck(const JarEntry& entry, ByteSink& out) : entry_(entry), out_(out) {}

  // False when it is too much.
  bool take(std::string_view bytes) {
    length_ += bytes.size();
    if (length_ > entry_.size()) return false;
    crc_ =
        crc32(crc_, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size()));
    out_.write(bytes);
    return true;
  }
  bool isWhole() const { return length_ == entry_.size() && crc_ == entry_.crc(); }

 private:
  const JarEntry& entry_;
  ByteSink& out_;
  std::uint64_t length_ = 0;
  uLong crc_ = crc32(0, nullptr, 0);
};

constexpr std::size_t kPiece = 256 * 1024;

// Hands out the packed bytes of an entry until `take` answers false.
template <typename Take>
void eachPiece(const JarFile& jar, const JarEntry& entry, Take take) {
  for (std::uint64_t done = 0; done < entry.packedSize();) {
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, entry.packedSize() - done));
    if (!take(jar.read(entry.contentAt + done, count))) return;
    done += count;
  }
}

class Inflater {
 public:
  Inflater() { isReady_ = inflateInit2(&stream_, -MAX_WBITS) == Z_OK; }
  ~Inflater() { inflateEnd(&stream_); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  // False when there is nothing more to do with what follows.
  bool take(std::string packed, ContentCheck& content) {
    stream_.next_in = reinterpret_cast<Bytef*>(packed.data());
    stream_.avail_in = static_cast<uInt>(packed.size());
    int result = isReady_ ? Z_OK : Z_MEM_ERROR;
    while (result == Z_OK && (stream_.avail_in > 0 || stream_.avail_out == 0)) {
      stream_.next_out = reinterpret_cast<Bytef*>(out_.data());
      stream_.avail_out = static_cast<uInt>(out_.size());
      result = inflate(&stream_, Z_NO_FLUSH);
      if (!content.take({out_.data(), out_.size() - stream_.avail_out})) return false;
      if (result == Z_BUF_ERROR) break;  // All of this piece is used up.
    }
    hasEnded_ = result == Z_STREAM_END && stream_.avail_in == 0;
    return result == Z_OK || result == Z_BUF_ERROR;
  }
  bool hasEnded() const { return hasEnded_; }

 private:
  z_stream stream_{};
  bool isReady_ = false;
  bool hasEnded_ = false;
  std::array<char, 64 * 1024> out_;
};

[[noreturn]] void throwDamaged(const JarFile& jar, const JarEntry& entry) {
  throw PackError("the entry " + entry.name + " is damaged", "build the jar again",
                  {jar.path(), 0});
}

void copyContent(const JarFile& jar, const JarEntry& entry, ByteSink& out) {
  ContentCheck content(entry, out);
  bool hasEnded = true;
  if (entry.method() == kStoredMethod) {
    eachPiece(jar, entry, [&](const std::string& bytes) { return content.take(bytes); });
  } else {
    Inflater inflater;
    eachPiece(jar, entry,
              [&](std::string bytes) { return inflater.take(std::move(bytes), content); });
    hasEnded = inflater.hasEnded();
  }
  if (!hasEnded || !content.isWhole()) throwDamaged(jar, entry);
}

// The fields that the header in front of an entry and that in the directory have in common.
std::string commonFields(const JarEntry& entry) {
  std::string out;
  put16(out, entry.isFolder() ? kVersionForFolders : kVersionForFiles);
  put16(out, entry.flags() & kNameIsUtf8);
  put16(out, kStoredMethod);
  put16(out, kEarliestTime);
  put16(out, kEarliestDate);
  put32(out, entry.crc());
  put32(out, entry.size());
  put32(out, entry.size());
  put16(out, static_cast<std::uint32_t>(entry.name.size()));
  put16(out, 0);  // extra field
  return out;
}

std::string newDirectoryEntry(const JarEntry& entry, std::uint32_t offset) {
  std::string out(kDirectoryEntryMark);
  out += entry.fixed.substr(4, 2);  // made by: says what the attributes mean
  out += commonFields(entry);
  put16(out, static_cast<std::uint32_t>(entry.comment.size()));
  put16(out, 0);                     // disk
  out += entry.fixed.substr(36, 6);  // attributes
  put32(out, offset);
  return out + entry.name + entry.comment;
}

std::string newEnd(const JarDirectory& directory, std::uint32_t count, std::uint32_t offset,
                   std::uint32_t length) {
  std::string out(kDirectoryEndMark);
  put32(out, 0);  // disks
  put16(out, count);
  put16(out, count);
  put32(out, length);
  put32(out, offset);
  put16(out, static_cast<std::uint32_t>(directory.comment.size()));
  return out + directory.comment;
}

std::uint64_t storedSize(const JarDirectory& directory) {
  std::uint64_t size = kDirectoryEndSize + directory.comment.size();
  for (const JarEntry& entry : directory.entries)
    size += kLocalHeaderSize + kDirectoryEntrySize + 2 * entry.name.size() + entry.comment.size() +
            entry.size();
  return size;
}

void writeStored(const JarFile& jar, JarDirectory& directory, EntryTest isWanted, ByteSink& out) {
  std::vector<std::uint32_t> offsets(directory.entries.size());
  std::uint32_t at = 0;
  for (JarEntry* entry : inFileOrder(jar, directory)) {
    if (!isWanted(*entry)) continue;
    offsets[static_cast<std::size_t>(entry - directory.entries.data())] = at;
    out.write(std::string(kLocalHeaderMark) + commonFields(*entry) + entry->name);
    copyContent(jar, *entry, out);
    at += static_cast<std::uint32_t>(kLocalHeaderSize + entry->name.size()) + entry->size();
  }
  std::uint32_t length = 0, count = 0;
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    if (!isWanted(directory.entries[i])) continue;
    ++count;
    const std::string entry = newDirectoryEntry(directory.entries[i], offsets[i]);
    out.write(entry);
    length += static_cast<std::uint32_t>(entry.size());
  }
  out.write(newEnd(directory, count, at, length));
}

bool isKept(const JarEntry&) { return true; }

bool isNoModuleDescriptor(const JarEntry& entry) {
  return entry.name != kModuleDescriptor &&
         !(entry.name.starts_with("META-INF/versions/") &&
           entry.name.ends_with("/" + std::string(kModuleDescriptor)));
}

std::string storeEntries(const std::string& source, const std::string& path, EntryTest isWanted) {
  try {
    const JarFile jar(source);
    JarDirectory directory = readJarDirectory(jar);
    if (storedSize(directory) >= kElsewhere32) return kTooLargeJar.why;
    FileSink out(path, 0666, Durability::kLeftToTheSystem);
    writeStored(jar, directory, isWanted, out);
    out.commit();
    return "";
  } catch (const OddJar& odd) {
    return odd.why;
  }
}

}  // namespace

std::string storeJar(const std::string& source, const std::string& path) {
  return storeEntries(source, path, isKept);
}

std::string storeJarForClassPath(const std::string& source, const std::string& path) {
  return storeEntries(source, path, isNoModuleDescriptor);
}

}  // namespace quillory::pack
