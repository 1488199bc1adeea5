// Makes a release: a bundle, and what installations need to become it.
#pragma once
#include <cstdint>
#include <optional>
#include <string>

#include "packager/commands/bundle.h"
#include "packager/commands/command.h"
#include "packager/config/config.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct ReleaseOptions {
  BundleOptions bundle;
  std::string channel;                 ///< "": that of the configuration
  std::optional<std::int64_t> number;  ///< none: the next one
  std::int64_t now = 0;                ///< seconds since 1970
};

struct ReleaseResult {
  BundleResult bundle;
  std::int64_t number = 0;
  std::string list;  ///< the path of the release list
};

/// Bundle, archives, deltas and the list. Throws RejectedInput, before anything is put in place,
/// where a number or a version was used for something else. Whatever happens, the earlier list
/// names what lies in the folder until the new one takes its place, at last.
ReleaseResult makeRelease(const Config& config, const ReleaseOptions& options, Reporter& reporter);

/// "release": reads a configuration and releases what it names.
Command releaseCommand();

}  // namespace quillory::pack
