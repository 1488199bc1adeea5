// Writes archives ("p2"), as formats/archive.h reads them; docs/formats/archive.md has the bytes.
#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include "formats/archive_identity.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/content/content_tree.h"
#include "packager/keys/mixed_digest.h"
#include "packager/keys/signing_key.h"

namespace quillory::pack {

class ArchiveWriter {
 public:
  explicit ArchiveWriter(ByteSink& sink) : sink_(sink), out_(sink) {}

  /// What the archive is, which a hardened bundle asks for. The first entry, or none.
  void identity(const ArchiveIdentity& identity);
  void folder(const std::string& path);
  void bytes(const std::string& path, std::string_view content);
  /// Throws PackError when the file no longer has `size` bytes.
  void file(const std::string& path, const std::string& source, std::uint64_t size);
  /// All entries of a tree; empty files are left out, as nobody would recreate them.
  void tree(const ContentTree& content);

  /// Closes an archive without a signature.
  void end();
  /// Closes it with the signature of everything written so far.
  void endSigned(const SigningKey& key, Salt salt);

 private:
  // Hashes and counts what passes.
  class Tee : public ByteSink {
   public:
    explicit Tee(ByteSink& next) : next_(next) {}
    void write(std::string_view bytes) override;
    std::uint64_t count = 0;
    MixedDigest digest;

   private:
    ByteSink& next_;
  };

  ByteSink& sink_;
  Tee out_;
};

/// Writes an entry header for content of `size` bytes that the caller writes next; the wrapper tail
/// uses the entries of archives, one after another, without an end.
void writeFileEntryHeader(ByteSink& sink, const std::string& path, std::uint64_t size);

}  // namespace quillory::pack
