#include "packager/commands/released_archive.h"

#include <optional>

#include "formats/sha256.h"
#include "install/version_folders.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/keys/public_key.h"
#include "packager/reading/plain_archive.h"
#include "packager/writing/archive_writer.h"

namespace quillory::pack {
namespace {

class DigestSink : public ByteSink {
 public:
  void write(std::string_view bytes) override { digest_.update(bytes); }
  Digest finish() { return digest_.finish(); }

 private:
  MixedDigest digest_;
};

// What the archive of a job would be signed over.
Digest contentDigest(const PackingJob& job) {
  DigestSink digest;
  ArchiveWriter archive(digest);
  archive.identity(*job.identity);
  archive.tree(*job.content);
  return digest.finish();
}

// Whether the archive at `path` is signed by this key over this content: nothing else needs to be
// compared.
bool holdsContent(const std::string& path, const PackingJob& job, const SigningKey& key) {
  const PlainArchive plain(wholeFile(path), true);
  Findings ignored;
  const ArchiveListing listing = plain.list(ignored, path);
  return listing.signature && PublicKey::fromHex(key.publicHex(), path)
                                  .verifies(fromHex(listing.signature->hex), contentDigest(job));
}

const char* versionKeyOf(const std::string& role) {
  return role == kUpdaterRole   ? "updater.version"
         : role == kRuntimeRole ? "runtime.version"
                                : "application.version";
}

}  // namespace

std::string releasedArchive(const ReleaseFolder& folder, const PackingJob& job,
                            const SigningKey& key) {
  const ArchiveIdentity& identity = *job.identity;
  const ReleaseComponent* released = folder.released(identity.component, identity.version);
  if (released == nullptr) {
    return "";
  }
  const std::string path = folder / released->archive.name;
  const std::optional<HashedFile> file = hashFile(path);
  if (!file || file->sha256 != released->archive.sha256) {
    throw PackError(file ? "is not the archive that was released" : "is gone",
                    "get it back from your server", {path, 0});
  }
  if (!holdsContent(path, job, key)) {
    throw RejectedInput({{Severity::kError,
                          "version-used",
                          "version " + identity.version + " of \"" + identity.component +
                              "\" was released with other content, or signed by another key",
                          {path, 0},
                          std::string("raise ") + versionKeyOf(released->role)}});
  }
  return path;
}

}  // namespace quillory::pack
