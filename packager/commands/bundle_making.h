// The steps from a configuration to a bundle and its release files, for the commands that make
// them: judged, packed, assembled beside their final place, put there.
#pragma once
#include <functional>
#include <optional>
#include <string>

#include "packager/bytes/work_folder.h"
#include "packager/commands/bundle.h"
#include "packager/commands/bundle_parts.h"
#include "packager/commands/output_place.h"
#include "packager/commands/packed_parts.h"
#include "packager/commands/update_keys.h"
#include "packager/config/config.h"
#include "packager/content/bundle_tools.h"
#include "packager/content/pack_cache.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

class BundleMaking {
 public:
  /// Gathers and judges all that goes in, before anything is packed. The configuration is borrowed.
  /// Throws RejectedInput when it does not hold up, PackError when something fails.
  BundleMaking(const Config& config, const BundleOptions& options, Reporter& reporter);

  /// The keys of an installation that looks for updates; null where none does.
  const UpdateKeys* updateKeys() const { return updateKeys_ ? &*updateKeys_ : nullptr; }
  const BundleParts& parts() const { return parts_; }

  /// The parts as archives; see packParts().
  PackedParts pack(const ArchiveSource& earlier = {});
  /// Bundle and release files of those, in the work folder.
  MadeFiles assemble(const PackedParts& packed) const;
  /// Puts them where they belong, those of an earlier run replaced; see putInPlace().
  BundleResult finish(const MadeFiles& made) const;

  const std::string& workFolder() const { return work_.path(); }

 private:
  const SigningKey* archiveKey() const;

  const Config& config_;
  BundleOptions options_;
  Reporter& reporter_;
  std::string bundle_;  ///< where it goes
  WorkFolder work_;
  PackCache cache_;
  std::optional<SigningKey> key_;  ///< moved from where there are update keys
  bool isHardened_ = false;
  std::optional<UpdateKeys> updateKeys_;
  BundleTools tools_;
  BundleParts parts_;
};

}  // namespace quillory::pack
