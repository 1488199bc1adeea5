#include "formats/release_fields.h"

#include "formats/release_list_format.h"
#include "formats/sha256.h"

namespace quillory {

std::string readFileName(StrictRecords& records, const char* record) {
  std::string value = records.text(record, kMaxFileNameBytes);
  records.require(isPlainFileName(value), record, "it is no plain file name");
  return value;
}

std::string readVersion(StrictRecords& records, const char* record) {
  std::string value = records.text(record, kMaxListTextBytes);
  records.require(isComponentVersion(value), record, "it is no version");
  return value;
}

std::string readSha256(StrictRecords& records, const char* record) {
  std::string value = records.text(record, kSha256HexLength);
  records.require(isSha256Hex(value), record, "it is no SHA-256");
  return value;
}

}  // namespace quillory
