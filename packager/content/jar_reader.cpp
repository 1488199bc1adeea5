#include "packager/content/jar_reader.h"

#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "packager/content/zip_fields.h"
#include "packager/report/findings.h"
#include "support/owned.h"

namespace quillory::pack {
namespace {

constexpr std::uint32_t kLargestManifest = 1 << 20;
constexpr std::uint32_t kLargestDirectory = 1 << 28;
constexpr char kManifestName[] = "META-INF/MANIFEST.MF";

[[noreturn]] void damaged(const std::string& path) {
  throw PackError("is not a jar, or a damaged one", "build it again", {path, 0});
}

std::string readAt(std::FILE* file, long offset, std::size_t size, const std::string& path) {
  std::string bytes(size, '\0');
  if (std::fseek(file, offset, SEEK_SET) != 0 || std::fread(bytes.data(), 1, size, file) != size) {
    damaged(path);
  }
  return bytes;
}

OwnedFile open(const std::string& path) {
  OwnedFile file(std::fopen(path.c_str(), "rb"));
  if (!file) {
    throwFileError(path, "cannot be opened", errno);
  }
  return file;
}

// The directory, found from the record at the file's end, which a comment may follow.
std::string readDirectory(std::FILE* file, const std::string& path) {
  if (std::fseek(file, 0, SEEK_END) != 0) {
    damaged(path);
  }
  const long size = std::ftell(file);
  const std::size_t tailSize = std::min<std::size_t>(static_cast<std::size_t>(std::max(size, 0L)),
                                                     kDirectoryEndSize + kLongestJarComment);
  const std::string tail = readAt(file, size - static_cast<long>(tailSize), tailSize, path);
  const std::size_t end = tail.rfind(kDirectoryEndMark);
  if (end == std::string::npos || end + kDirectoryEndSize > tail.size()) {
    damaged(path);
  }
  const std::uint32_t length = at32(tail, end + 12);
  if (length > kLargestDirectory || length > static_cast<std::uint64_t>(size)) {
    damaged(path);
  }
  return readAt(file, static_cast<long>(at32(tail, end + 16)), length, path);
}

std::string inflateRaw(std::string packed, std::uint32_t size, const std::string& path) {
  std::string plain(size, '\0');
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) {
    damaged(path);
  }
  stream.next_in = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(plain.data());
  stream.avail_out = size;
  const int result = inflate(&stream, Z_FINISH);
  inflateEnd(&stream);
  if (result != Z_STREAM_END || stream.avail_out != 0) {
    damaged(path);
  }
  return plain;
}

bool isSameText(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char one, char other) {
    return std::tolower(static_cast<unsigned char>(one)) ==
           std::tolower(static_cast<unsigned char>(other));
  });
}

std::string withoutBlanksAround(std::string text) {
  text.erase(0, text.find_first_not_of(" \t"));
  text.erase(text.find_last_not_of(" \t") + 1);
  return text;
}

// The lines up to the first empty one, whatever ends them; one that begins with a blank continues
// the one before.
std::vector<std::string> mainSectionOf(const std::string& manifest) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < manifest.size();) {
    const std::size_t end = std::min(manifest.find_first_of("\r\n", at), manifest.size());
    const std::string line = manifest.substr(at, end - at);
    if (line.empty()) {
      break;
    }
    if (line[0] == ' ' && !lines.empty()) {
      lines.back() += line.substr(1);
    } else {
      lines.push_back(line);
    }
    at = end + (manifest.compare(end, 2, "\r\n") == 0 ? 2 : 1);
  }
  return lines;
}

}  // namespace

Jar::Jar(const std::string& path) : path_(path) {
  const OwnedFile file = open(path);
  const std::string directory = readDirectory(file.get(), path);
  std::size_t at = 0;
  while (at + kDirectoryEntrySize <= directory.size()) {
    if (directory.compare(at, 4, kDirectoryEntryMark) != 0) {
      damaged(path);
    }
    Entry entry;
    entry.method = at16(directory, at + 10);
    entry.packedSize = at32(directory, at + 20);
    entry.size = at32(directory, at + 24);
    entry.offset = at32(directory, at + 42);
    const std::size_t nameSize = at16(directory, at + 28);
    const std::size_t extra = at16(directory, at + 30) + at16(directory, at + 32);
    if (at + kDirectoryEntrySize + nameSize > directory.size()) {
      damaged(path);
    }
    entries_[directory.substr(at + kDirectoryEntrySize, nameSize)] = entry;
    at += kDirectoryEntrySize + nameSize + extra;
  }
}

bool Jar::isModule() const {
  constexpr std::string_view kDescriptor = "module-info.class";
  return std::any_of(entries_.begin(), entries_.end(), [&](const auto& entry) {
    const std::string& name = entry.first;
    return name == kDescriptor ||
           (name.starts_with("META-INF/versions/") && name.ends_with(kDescriptor) &&
            name[name.size() - kDescriptor.size() - 1] == '/');
  });
}

bool Jar::hasClass(const std::string& name) const {
  std::string path = name;
  std::replace(path.begin(), path.end(), '.', '/');
  return contains(path + ".class");
}

std::string Jar::content(const std::string& name) const {
  const Entry& entry = entries_.at(name);
  if (entry.size > kLargestManifest || entry.packedSize > kLargestManifest) {
    damaged(path_);
  }
  const OwnedFile file = open(path_);
  const auto offset = static_cast<long>(entry.offset);
  const std::string header = readAt(file.get(), offset, kLocalHeaderSize, path_);
  const long start = offset + static_cast<long>(kLocalHeaderSize) +
                     static_cast<long>(at16(header, 26) + at16(header, 28));
  std::string packed = readAt(file.get(), start, entry.packedSize, path_);
  return entry.method == kDeflatedMethod ? inflateRaw(std::move(packed), entry.size, path_)
                                         : packed;
}

std::string Jar::manifestValue(const std::string& name) const {
  const auto manifest = std::find_if(entries_.begin(), entries_.end(), [](const auto& entry) {
    return isSameText(entry.first, kManifestName);
  });
  if (manifest == entries_.end()) {
    return "";
  }
  for (const std::string& line : mainSectionOf(content(manifest->first))) {
    const std::size_t colon = line.find(':');
    if (colon != std::string::npos && isSameText(line.substr(0, colon), name)) {
      return withoutBlanksAround(line.substr(colon + 1));
    }
  }
  return "";
}

void Jar::eachClass(const std::function<bool(std::string_view)>& take) const {
  for (const auto& [name, entry] : entries_) {
    if (!name.ends_with(".class")) {
      continue;
    }
    try {
      if (!take(content(name))) {
        return;
      }
    } catch (const PackError&) {  // Others may be whole: what is asked is asked of those.
    }
  }
}

std::string Jar::mainClass() const {
  std::string name = manifestValue("Main-Class");
  std::replace(name.begin(), name.end(), '/', '.');
  return name;
}

}  // namespace quillory::pack
