// What the launcher does not take as a dynamic parameter: asked by the configuration and by "set".
#pragma once
#include <optional>
#include <string>

#include "packager/config/name_rules.h"
#include "packager/report/findings.h"

namespace quillory::pack {

/// What is wrong with an update URL that is not empty; none when nothing is.
std::optional<Finding> flawOfUpdateUrl(const Subject& subject, const std::string& url);

/// The same of a parameter. An empty update_url is no mistake: it switches updates off.
std::optional<Finding> flawOfParameter(const Subject& subject, const std::string& name,
                                       const std::string& value);

}  // namespace quillory::pack
