#include "packager/reading/runtime_classes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {
namespace {

// The file begins with its directory: these numbers, two tables of four bytes an entry, which are
// for looking a name up; the attributes of each file; the texts that those point into. What is in
// the files comes behind.
constexpr std::uint32_t kMagic = 0xCAFEDADA;
constexpr std::uint32_t kMajorVersion = 1;
constexpr std::size_t kNumbers = 7;  // magic, version, flags, files, table, attributes, texts
constexpr std::size_t kHeaderSize = 4 * kNumbers;
constexpr std::size_t kTablesEntrySize = 8;
constexpr std::size_t kLargestDirectory = 256U * 1024 * 1024;

// Kinds of attributes.
enum Attribute : std::uint8_t { kEnd, kModule, kFolder, kName, kExtension };
constexpr std::size_t kKinds = 8;

struct Directory {
  std::string_view attributes;
  std::string_view texts;
};

// In the order of bytes of all processors that there are runtimes for here.
std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 4; i-- > 0;) {
    number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
  }
  return number;
}

std::optional<std::string> directoryBytes(const std::string& path) {
  const std::string header = readBeginningOf(path, kHeaderSize);
  if (header.size() < kHeaderSize || numberAt(header, 0) != kMagic ||
      numberAt(header, 4) >> 16 != kMajorVersion) {
    return std::nullopt;
  }
  const std::uint64_t size = kHeaderSize + std::uint64_t{kTablesEntrySize} * numberAt(header, 16) +
                             numberAt(header, 20) + numberAt(header, 24);
  if (size > kLargestDirectory) {
    return std::nullopt;
  }
  std::string bytes = readBeginningOf(path, static_cast<std::size_t>(size));
  return bytes.size() == size ? std::optional(std::move(bytes)) : std::nullopt;
}

Directory directoryIn(std::string_view bytes) {
  const std::size_t attributes = kHeaderSize + kTablesEntrySize * numberAt(bytes, 16);
  const std::size_t length = numberAt(bytes, 20);
  return {bytes.substr(attributes, length), bytes.substr(attributes + length)};
}

// A text of the directory; "" for one that is not in it.
std::string_view textAt(std::string_view texts, std::uint64_t at) {
  const std::size_t end = at < texts.size() ? texts.find('\0', at) : std::string_view::npos;
  return end == std::string_view::npos ? std::string_view() : texts.substr(at, end - at);
}

// The attributes of one file, taken from `rest`; false where they are cut short.
bool takeFile(std::string_view& rest, std::array<std::uint64_t, kKinds>& values) {
  values.fill(0);
  while (!rest.empty()) {
    const auto first = static_cast<unsigned char>(rest.front());
    const std::size_t kind = first >> 3;
    rest.remove_prefix(1);
    if (kind == kEnd) {
      return true;
    }
    const std::size_t length = (first & 7U) + 1;
    if (kind >= kKinds || rest.size() < length) {
      return false;
    }
    for (const char byte : rest.substr(0, length)) {
      values[kind] = values[kind] << 8 | static_cast<unsigned char>(byte);
    }
    rest.remove_prefix(length);
  }
  return false;
}

}  // namespace

std::optional<std::set<std::string>> classesOfRuntime(const std::string& javaHome) {
  const std::string path = javaHome + "/lib/modules";
  const std::optional<std::string> bytes = isFile(path) ? directoryBytes(path) : std::nullopt;
  if (!bytes) {
    return std::nullopt;
  }
  Directory directory = directoryIn(*bytes);
  std::set<std::string> classes;
  std::array<std::uint64_t, kKinds> values{};
  while (!directory.attributes.empty()) {
    if (!takeFile(directory.attributes, values)) {
      return std::nullopt;
    }
    // What has no folder is a module's description.
    const std::string_view folder = textAt(directory.texts, values[kFolder]);
    if (!folder.empty() && textAt(directory.texts, values[kExtension]) == "class") {
      classes.insert(std::string(folder) + '/' +
                     std::string(textAt(directory.texts, values[kName])));
    }
  }
  return classes;
}

}  // namespace quillory::pack
