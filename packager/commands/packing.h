// Packs trees of content into signed, compressed archives, several at a time.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "formats/archive_identity.h"
#include "packager/content/content_tree.h"
#include "packager/content/pack_cache.h"
#include "packager/keys/signing_key.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct PackingJob {
  const ContentTree* content = nullptr;
  std::string output;  ///< a ".p2.l2" file
  /// What the archive says that it is; none: it says nothing of that.
  std::optional<ArchiveIdentity> identity = std::nullopt;
};

struct PackingOptions {
  int level = 6;
  const SigningKey* key = nullptr;  ///< null: without a signature
  Salt salt = Salt::kRandom;
  PackCache* cache = nullptr;  ///< archives that were made before; null for none
};

/// Packs all jobs at the same time, into files that nobody keeps: the disk is not waited for. When
/// one fails the others are stopped and nothing of them is left. What is in the cache, signed with
/// the same key, is copied from there, and what is packed is kept there.
void packAll(const std::vector<PackingJob>& jobs, const PackingOptions& options,
             Reporter& reporter);

}  // namespace quillory::pack
