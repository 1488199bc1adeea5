#include "formats/archive_trust.h"

#include <cstdio>
#include <cstdlib>

#include "formats/archive_format.h"
#include "formats/record_stream.h"
#include "support/owned.h"

namespace quillory {
namespace {

// One walk from the first entry to the signature block, over the content.
class Walk {
 public:
  Walk(std::FILE* archive, ArchiveInspection& found) : archive_(archive), found_(found) {
    std::fseek(archive_, 0, SEEK_END);
    size_ = std::ftell(archive_);
    std::rewind(archive_);
  }

  // "" when the archive ends with a signature block that stands where it says.
  std::string walk() {
    for (bool isFirst = true;; isFirst = false) {
      const long start = std::ftell(archive_);
      const std::string type = readText(archive_, kEntryTypeRecord);
      if (type.empty()) return "it is not signed";
      const std::string path = readText(archive_, kEntryPathRecord);
      const long kind = std::atol(type.c_str());
      if (kind == kFolderEntry) continue;
      const long length = readLong(archive_, kEntryLengthRecord);
      if (length == 0) {
        if (isFirst && kind == kFileEntry) found_.identity = parseIdentityPath(path);
        continue;
      }
      if (path == kSignatureBlockPath) return readSignature(start);
      if (kind == kPack200Entry) found_.needsUnpack200 = true;
      const long rest = size_ - std::ftell(archive_);
      if (length < 0 || length > rest) return "it is cut off, or damaged, in " + path;
      std::fseek(archive_, length, SEEK_CUR);
    }
  }

 private:
  std::string readSignature(long start) {
    found_.signature.offset = readLong(archive_, kSignaturePlaceRecord);
    found_.signature.hex = readText(archive_, kSignatureHexRecord, kSignatureHexCapacity);
    // What stands between the named offset and the block would be extracted without being signed.
    if (found_.signature.offset != start) return "its signature does not cover all of it";
    return isAtEnd(archive_) ? "" : "something follows its signature";
  }

  std::FILE* archive_;
  ArchiveInspection& found_;
  long size_ = 0;
};

std::string refusalOf(const std::optional<ArchiveIdentity>& identity, const ArchiveTrust& trust) {
  if (!identity) return "it does not say what it is";
  if (!trust.expected) return "";
  const ArchiveIdentity& expected = *trust.expected;
  if (identity->component == expected.component && identity->version == expected.version &&
      runsOn(identity->platform, expected.platform))
    return "";
  return "it is " + asText(*identity) + ", not " + asText(expected);
}

}  // namespace

std::optional<ArchiveInspection> inspectArchive(const std::string& path,
                                                const ArchiveTrust& trust) {
  const OwnedFile archive(std::fopen(path.c_str(), "rb"));
  if (!archive) return std::nullopt;
  ArchiveInspection found;
  found.refusal = Walk(archive.get(), found).walk();
  if (found.refusal.empty()) found.refusal = refusalOf(found.identity, trust);
  return found;
}

}  // namespace quillory
