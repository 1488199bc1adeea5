#include "tests/macos/loader/image_bytes.h"

#include <elf.h>

#include <cstring>
#include <fstream>

#include "tests/macos/loader/load_error.h"
#include "tests/macos/loader/macho_format.h"

namespace quillory::loader {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::uint32_t bigEndianAt(const Bytes& bytes, std::size_t at) {
  std::uint32_t number;
  std::memcpy(&number, bytes.data() + at, 4);
  return __builtin_bswap32(number);
}

Bytes contentFrom(const std::string& path, std::uint64_t offset) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) throw LoadError(path + ": cannot be read");
  const auto size = static_cast<std::uint64_t>(file.tellg());
  if (offset > size) throw LoadError(path + ": is cut");
  Bytes bytes(size - offset);
  file.seekg(static_cast<std::streamoff>(offset));
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file) throw LoadError(path + ": cannot be read");
  return bytes;
}

// The table of sections is the last thing in what the linker makes.
std::uint64_t endOfElf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  Elf64_Ehdr header;
  file.read(reinterpret_cast<char*>(&header), sizeof header);
  if (!file || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0)
    throw LoadError(path + ": is no ELF file");
  return header.e_shoff + std::uint64_t{header.e_shnum} * header.e_shentsize;
}

Bytes sliceOf(const Bytes& universal, const std::string& path) {
  const std::size_t count = universal.size() < 8 ? 0 : bigEndianAt(universal, 4);
  for (std::size_t i = 0, at = 8; i < count && at + 20 <= universal.size(); ++i, at += 20) {
    if (bigEndianAt(universal, at) != kX86_64) continue;
    const std::uint64_t offset = bigEndianAt(universal, at + 8);
    const std::uint64_t size = bigEndianAt(universal, at + 12);
    if (offset + size > universal.size()) throw LoadError(path + ": is cut");
    const auto first = universal.begin() + static_cast<std::ptrdiff_t>(offset);
    return {first, first + static_cast<std::ptrdiff_t>(size)};
  }
  throw LoadError(path + ": has no part for x86_64");
}

std::uint32_t magicOf(const Bytes& bytes) {
  std::uint32_t magic = 0;
  if (bytes.size() >= 4) std::memcpy(&magic, bytes.data(), 4);
  return magic;
}

Bytes thin(Bytes bytes, const std::string& path) {
  if (magicOf(bytes) == kUniversal) bytes = sliceOf(bytes, path);
  if (magicOf(bytes) != kMachO64) throw LoadError(path + ": holds no Mach-O image");
  return bytes;
}

}  // namespace

Bytes imageOf(const std::string& path) { return thin(contentFrom(path, 0), path); }

Bytes carriedImage(const std::string& path) {
  Bytes bytes = contentFrom(path, endOfElf(path));
  return bytes.empty() ? bytes : thin(std::move(bytes), path);
}

bool isMachO(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::uint32_t magic = 0;
  file.read(reinterpret_cast<char*>(&magic), sizeof magic);
  return file && (magic == kMachO64 || magic == kUniversal);
}

}  // namespace quillory::loader
