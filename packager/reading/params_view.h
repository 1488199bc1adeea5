// The parameters file of a bundle, read for people and for changing it.
#pragma once
#include <optional>
#include <string>

#include "formats/params_format.h"
#include "packager/report/findings.h"

namespace quillory::pack {

struct ParamsView {
  std::string file;
  std::string before;  ///< what stands before the marker
  Parameters parameters;

  /// The value that counts: the last one of that name.
  const std::string* find(const std::string& name) const;
};

/// None when the file holds no marker.
std::optional<ParamsView> readParams(const std::string& path, Findings& findings);

}  // namespace quillory::pack
