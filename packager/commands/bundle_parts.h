// What a bundle is put together from: its updater, its application and its runtime, each a tree of
// content with the name and version that it is installed under.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "packager/config/config.h"
#include "packager/content/bundle_tools.h"
#include "packager/content/content_tree.h"
#include "packager/content/pack_cache.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct BundlePart {
  std::string name;
  std::string version;  ///< a whole number
  ContentTree content;
  std::vector<std::string> architectures{};  ///< of a runtime for macOS
};

struct BundleParts {
  BundlePart updater;
  BundlePart application;
  std::optional<BundlePart> runtime;  ///< none: the launcher finds or downloads one
};

/// The jars of the application, patterns resolved, in class path order. Throws RejectedInput when a
/// pattern matches nothing, and when there is no folder where a root is named.
std::vector<std::string> findJars(const Config& config);

/// With the programs of `tools` that update an installation, and `updateSettings` as the file that
/// tells them how, where there are any. Throws RejectedInput when what the configuration names as
/// the updater has no class to start, and PackError when that is so of our own.
BundlePart updaterPart(const Config& config, const BundleTools& tools,
                       const std::string& updateSettings = "");

/// The jars where the layout has them, or the root as it lies; the other files of the
/// configuration, and the launch file. Files that are missing are findings of the tree.
/// `packedJars` are packed in the place of `jars`, in the same order; without them the jars
/// themselves are.
BundlePart applicationPart(const Config& config, const std::vector<std::string>& jars,
                           const std::vector<std::string>& packedJars = {});

/// The folder of the runtime that the configuration asks for: the one that it names, or one made
/// with jlink below `workFolder`, for the jars of the application and the updater. Throws
/// RejectedInput when it has no java, PackError when it cannot be made.
std::string runtimeHome(const Config& config, const BundleTools& tools,
                        const std::vector<std::string>& jars, Target target,
                        const std::string& workFolder, PackCache& cache, Reporter& reporter);

/// That runtime as it is packed, with a list of classes (runtime_class_list.h). Its version is the
/// one of its release file when the configuration has none. Throws RejectedInput when it does not
/// go with the launcher, or has no version, and what runtimeHome() and addClassList() throw.
BundlePart runtimePart(const Config& config, const BundleTools& tools,
                       const std::vector<std::string>& jars, Target target,
                       const std::string& workFolder, PackCache& cache, Reporter& reporter);

}  // namespace quillory::pack
