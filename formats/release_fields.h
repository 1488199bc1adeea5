// Values that a release list and a delta both have, read from their records. One that is not what
// it should be refuses the stream.
#pragma once
#include <string>

#include "formats/strict_records.h"

namespace quillory {

/// A name that is one component of a path.
std::string readFileName(StrictRecords& records, const char* record);
/// The version of a component.
std::string readVersion(StrictRecords& records, const char* record);
/// A SHA-256 in hexadecimal.
std::string readSha256(StrictRecords& records, const char* record);

}  // namespace quillory
