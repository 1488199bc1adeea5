// Makes an application bundle, and the files for the update URL, from a configuration.
#pragma once
#include <optional>
#include <string>

#include "packager/commands/command.h"
#include "packager/config/config.h"
#include "packager/content/program_folder.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct BundleOptions {
  std::optional<std::string> output;  ///< instead of bundle.output
  std::optional<int> compression;     ///< instead of bundle.compression
  bool unsignedArchives = false;      ///< pack without a key
  Target target = nativeTarget();     ///< the system that the bundle is for
};

struct BundleResult {
  std::string bundle;         ///< dist/<name>.app
  std::string releaseFolder;  ///< dist/release
  std::uint64_t bundleBytes = 0;
};

/// Throws RejectedInput when the content does not hold up, PackError when something fails. A bundle
/// of an earlier run is replaced only when the new one is complete.
BundleResult makeBundle(Config config, const BundleOptions& options, Reporter& reporter);

/// "bundle": reads a configuration and packs what it names.
Command bundleCommand();

}  // namespace quillory::pack
