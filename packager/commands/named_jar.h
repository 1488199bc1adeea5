// A jar that a configuration names.
#pragma once
#include <optional>
#include <string>

#include "packager/content/jar_reader.h"
#include "packager/report/findings.h"

namespace quillory::pack {

/// The jar at `path`, which the configuration names at `place`; none, with a finding, when it is
/// not one.
std::optional<Jar> namedJar(const std::string& path, const Place& place, Findings& findings);

}  // namespace quillory::pack
