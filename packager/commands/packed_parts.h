// The parts of a bundle as archives.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "packager/commands/bundle_parts.h"
#include "packager/commands/packing.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct PackedPart {
  std::string name;
  std::string version;
  std::string archive;  ///< its file, signed and compressed
};

struct PackedParts {
  PackedPart updater;
  PackedPart application;
  std::optional<PackedPart> runtime;
  bool isHardened = false;  ///< the archives say what they are, which hardened launchers ask
};

/// Packs all parts at the same time into files in `folder`, under the names that they have in a
/// tail. With a `platform`, the name of a target, the archives say what they are: the updater for
/// every platform, the others for that one. Throws PackError; nothing is left in the folder then.
PackedParts packParts(const BundleParts& parts, const PackingOptions& options,
                      const std::string& folder, Reporter& reporter,
                      const std::string& platform = "");

}  // namespace quillory::pack
