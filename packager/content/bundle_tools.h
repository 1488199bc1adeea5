// The programs that travel in bundles, found in the configuration or where builds and
// installations of this program have them.
#pragma once
#include <array>
#include <string>

#include "formats/archive_format.h"
#include "packager/config/config.h"
#include "packager/reading/target.h"

namespace quillory::pack {

struct BundleTools {
  Target target = Target::kLinux;  ///< what they are for
  std::string launcher;
  /// What undoes each of kCompressions, in their order.
  std::array<std::string, kCompressions.size()> decompressors;
  std::string updaterJar;
  std::string elevMac;  ///< "" when there is none, which only this system's own programs may lack
  // Of an updater that looks for updates; "" in others.
  std::string updateProgram;
  std::string updateWindow;
};

/// The names of the programs in the updater's archive, which is where they lie here, too.
inline constexpr char kUpdateProgramName[] = "quillory-update";
inline constexpr char kUpdateWindowName[] = "quillory-update-window";

/// The program of that name which comes with us for `target`; "" when it is nowhere.
std::string ownProgramFor(Target target, const std::string& name);

/// A file that is no program and comes with us; "" when it is nowhere.
std::string ownFile(const std::string& name);

/// Throws RejectedInput when a file that the configuration names is not there or not for `target`,
/// or when the launcher holds a tail already; PackError when the files of `target` are nowhere.
BundleTools findBundleTools(const Config& config, Target target);

}  // namespace quillory::pack
