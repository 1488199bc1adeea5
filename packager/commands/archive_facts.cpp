#include "packager/commands/archive_facts.h"

#include "formats/sha256.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

HashedFile hashed(const std::string& path) {
  if (std::optional<HashedFile> file = hashFile(path)) {
    return *file;
  }
  throw PackError("cannot be read", "", {path, 0});
}

}  // namespace

ArchiveFacts::ArchiveFacts(const std::string& path) : path_(path), plain_(wholeFile(path), true) {}

ReleaseComponent ArchiveFacts::component(const std::string& role,
                                         const std::string& fileName) const {
  Findings findings;
  const ArchiveListing listing = plain_.list(findings, path_);
  if (hasErrors(findings)) {
    throw RejectedInput(findings);
  }
  const HashedFile packed = hashed(path_);
  const HashedFile plain = hashed(plain_.path());
  ReleaseComponent component;
  component.role = role;
  component.archive = {fileName, packed.length, packed.sha256};
  component.plainLength = plain.length;
  component.plainSha256 = plain.sha256;
  for (const ListedEntry& entry : listing.entries) {
    component.installedLength += entry.length;
  }
  if (listing.identity) {
    component.name = listing.identity->component;
    component.version = listing.identity->version;
  }
  return component;
}

}  // namespace quillory::pack
