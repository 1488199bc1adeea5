// What jpackage makes: an application folder with jars and a configuration of its start, beside a
// runtime.
#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "packager/content/found_application.h"

namespace quillory::pack {

/// "key=value" lines of a configuration of jpackage's launcher, in their order; a key may be there
/// more than once.
std::vector<std::pair<std::string, std::string>> appImageSettings(std::string_view text);

/// The image that `folder` is, or the first one that lies in it or in build/jpackage, dist, out or
/// target below it; none where there is none that has jars. An application whose classes are linked
/// into its runtime has none.
std::optional<FoundApplication> findAppImage(const std::string& folder);

}  // namespace quillory::pack
