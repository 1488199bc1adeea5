// Dynamic parameters: name/value pairs in a file of the bundle's Resources, which can be changed
// without signing the launcher anew. docs/formats/parameters-file.md has the bytes.
#pragma once
#include <cstdio>
#include <optional>
#include <string>

#include "formats/property_block.h"
#include "launcher/bundle_paths.h"

namespace quillory {

struct DynamicParams {
  std::optional<std::string> updateUrl;    ///< "update_url", where there is one
  std::optional<std::string> splashImage;  ///< "splash_image", decoded
  std::string jreName;                     ///< "jre_name", else ""
  bool isSilent = false;                   ///< "show_no_ui" was "true" at least once
  bool isAutoTest = false;                 ///< "wrapper_autotest" is there, whatever its value
  bool isHardened = false;                 ///< the last "hardened" is "true"
  bool showsFailures = false;              ///< the last "error_dialog" is "true"
};

/// Reads the parameters file of the bundle and adds every pair to `properties`. Sets `forceSpawn`
/// and the splash's margin on the way. Nothing when the file cannot be opened or holds no marker,
/// which is logged, and without which there is no start.
std::optional<DynamicParams> readDynamicParams(const Executable& exe, bool prepareOnly,
                                               PropertyBlock& properties);

/// Reads the count and the pairs at which `stream` stands, right behind the marker. A count that
/// promises more than the stream holds ends with the stream.
DynamicParams readParamPairs(std::FILE* stream, PropertyBlock& properties);

/// The JRE name of this installation: that of <master>/QYApps/JreNameOverride unless there is no
/// such file or it says "-"; else `jreName`.
std::string overrideJreName(const std::string& masterFolder, const std::string& jreName);

}  // namespace quillory
