// Makes an application bundle, and the files for the update URL, from a configuration.
#pragma once
#include <cstdint>
#include <string>

#include "packager/commands/command.h"
#include "packager/config/config.h"
#include "packager/content/program_folder.h"
#include "packager/reading/target.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct BundleOptions {
  std::string output;              ///< the folder for the results, made when missing
  int compression = 6;             ///< 0 (fast) to 9 (small)
  bool isUnsigned = false;         ///< pack without a key
  Target target = nativeTarget();  ///< the system that the bundle is for
  std::string cache{};             ///< the folder of what was packed before; "" for none
};

struct BundleResult {
  std::string bundle;         ///< <output>/<name>.app
  std::string releaseFolder;  ///< <output>/release
  std::uint64_t bundleBytes = 0;
};

/// Throws RejectedInput when the content does not hold up, PackError when something fails. A bundle
/// of an earlier run is replaced only when the new one is complete.
BundleResult makeBundle(const Config& config, const BundleOptions& options, Reporter& reporter);

/// "bundle": reads a configuration and packs what it names.
Command bundleCommand();

}  // namespace quillory::pack
