#include "packager/content/stub_jar.h"

#include <lzma.h>

#include <cstdint>
#include <string_view>

#include "packager/content/zip_fields.h"

namespace quillory::pack {
namespace {

constexpr std::string_view kName = "META-INF/MANIFEST.MF";
constexpr std::string_view kManifest =
    "Manifest-Version: 1.0\r\n"
    "Comment: stands in for the class library that is in lib/modules since Java 9\r\n"
    "\r\n";

constexpr std::uint16_t kVersionNeeded = 10;
// The fields that the local header and the central directory have in common.
void putCommonFields(std::string& out) {
  const auto crc =
      lzma_crc32(reinterpret_cast<const std::uint8_t*>(kManifest.data()), kManifest.size(), 0);
  put16(out, kVersionNeeded);
  put16(out, 0);  // flags
  put16(out, kStoredMethod);
  put16(out, kEarliestTime);
  put16(out, kEarliestDate);
  put32(out, crc);
  put32(out, static_cast<std::uint32_t>(kManifest.size()));
  put32(out, static_cast<std::uint32_t>(kManifest.size()));
  put16(out, static_cast<std::uint32_t>(kName.size()));
  put16(out, 0);  // extra field
}

}  // namespace

std::string stubRuntimeJar() {
  std::string jar(kLocalHeaderMark);
  putCommonFields(jar);
  jar += kName;
  jar += kManifest;

  std::string directory(kDirectoryEntryMark);
  put16(directory, kVersionNeeded);  // made by
  putCommonFields(directory);
  put16(directory, 0);  // comment
  put16(directory, 0);  // disk
  put16(directory, 0);  // internal attributes
  put32(directory, 0);  // external attributes
  put32(directory, 0);  // offset of the local header
  directory += kName;

  std::string end(kDirectoryEndMark);
  put16(end, 0);  // this disk
  put16(end, 0);  // disk of the directory
  put16(end, 1);  // entries on this disk
  put16(end, 1);  // entries
  put32(end, static_cast<std::uint32_t>(directory.size()));
  put32(end, static_cast<std::uint32_t>(jar.size()));
  put16(end, 0);  // comment
  return jar + directory + end;
}

}  // namespace quillory::pack
