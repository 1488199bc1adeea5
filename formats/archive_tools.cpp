#include "formats/archive_tools.h"

#include <vector>

#include "formats/archive_format.h"
#include "formats/archive_output.h"
#include "formats/hash_while_written.h"
#include "support/files.h"
#include "support/log.h"
#include "support/spawner.h"

namespace quillory {
namespace {

// Tools are judged by what they leave behind, not by their status.
void runIgnoringStatus(const std::vector<const char*>& arguments) {
  runSpawnerAndWait(spawnerOf(arguments).get());
}

}  // namespace

bool unpackPack200(const char* tool, const std::string& packed, const std::string& unpacked) {
  // A link must not be written through, and an older file not be taken for what the tool has made.
  removeFileOrLink(unpacked);
  if (tool != nullptr) runIgnoringStatus({tool, packed.c_str(), unpacked.c_str()});
  if (!doesFileExist(unpacked.c_str())) {
    logMessage("\t[ExtractArchiveFile] ERROR: unpack200 (%s) does not exist!\n", unpacked.c_str());
    return false;
  }
  removeFileOrLink(packed);
  return true;
}

Decompressed decompressLzma(const char* tool, const std::string& compressed) {
  logMessage("\t[ExtractArchiveFile] Requires un-LZMA\n");
  const std::string plain(withoutCompression(compressed));
  logMessage("\t[ExtractArchiveFile] Created outpath %s and spawning\n", plain.c_str());
  removeFileOrLink(plain);
  Decompressed result{plain, {}};
  if (plain.ends_with(kArchiveSuffix)) {
    HashWhileWritten hashing(plain);
    runIgnoringStatus({tool, "d", compressed.c_str(), plain.c_str()});
    result.digest = hashing.finish();
  } else {
    runIgnoringStatus({tool, "d", compressed.c_str(), plain.c_str()});
  }
  removeFileOrLink(compressed);
  logMessage("\t[ExtractArchiveFile] Finished decompressing\n");
  return result;
}

}  // namespace quillory
