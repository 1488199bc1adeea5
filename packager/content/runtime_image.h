// The Java runtime that goes into a bundle: made with jlink or taken from a folder, and arranged as
// the launcher wants it.
#pragma once
#include <string>
#include <vector>

#include "packager/config/config.h"
#include "packager/content/content_tree.h"
#include "packager/content/pack_cache.h"
#include "packager/content/runtime_options.h"
#include "packager/reading/target.h"

namespace quillory::pack {

/// Throws RejectedInput when jlink has no modules of `target` to link, or is not in the JDK that is
/// named, before it is run.
void requireModulesFor(Target target, const Config& config);

/// Makes a runtime in `workFolder` with jlink, without the names in its native libraries, and
/// returns its folder; one of the same modules and options is taken from the cache, where there is
/// one. `jars` are what jdeps looks at when no modules are named; `options` are what the runtime
/// passes to each JVM. Throws PackError, with what the tool said, when one fails, jdeps finds no
/// modules, or Java does not start with the options, which is tried where it is this system's.
std::string linkRuntime(const RuntimeConfig& config, const std::vector<std::string>& jars,
                        const std::string& workFolder, const RuntimeOptions& options = {},
                        PackCache* cache = nullptr);

/// The Java home in a folder that is one, or that is a macOS runtime bundle. Throws RejectedInput
/// when there is no bin/java.
std::string findJavaHome(const std::string& folder, const Place& place);

/// Why a runtime does not go with the launcher of a bundle for `target`, at `place`: errors when it
/// is for another system, a warning for processors that only the launcher runs on. A script in the
/// place of java runs everywhere.
Findings lintRuntime(const std::string& javaHome, Target target, const std::string& launcher,
                     const Place& place);

/// A whole number that grows with the Java version of a runtime ("17.0.9" gives 170000900), from
/// its release file; "" when it has none.
std::string versionNumberOf(const std::string& javaHome);
/// The same of a version as Java writes it; "1.8.0_202" counts as 8.0.202, and parts that do not
/// fit into their digits as the largest that do. "" when it begins with no number.
std::string versionNumberFor(const std::string& javaVersion);

/// Contents/Home with the runtime, without archives of classes, and a lib/rt.jar, Contents/MacOS
/// with the library that the bundle's executable stands for, Contents/Info.plist. `name` and
/// `version` are what it is installed under. Throws PackError when the runtime cannot be read.
ContentTree runtimeContent(const std::string& javaHome, const std::string& name,
                           const std::string& version);

}  // namespace quillory::pack
