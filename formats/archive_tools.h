// The external tools that an extracted file may need before it is what it is named after.
#pragma once
#include <string>

#include "formats/hash_ahead.h"

namespace quillory {

/// Unpacks `packed` to `unpacked` and deletes `packed`. False, logged, when `unpacked` does not
/// exist afterwards. `tool` null: nothing is run.
bool unpackPack200(const char* tool, const std::string& packed, const std::string& unpacked);

struct Decompressed {
  std::string path;
  BegunDigest digest;  ///< of an archive, for extractAllOf()
};

/// Decompresses a ".l2" file to the path without that suffix, and deletes it. Whether the tool
/// succeeded is not asked: the file may be missing or cut.
Decompressed decompressLzma(const char* tool, const std::string& compressed);

}  // namespace quillory
