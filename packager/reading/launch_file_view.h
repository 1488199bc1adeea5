// A launch file, read for people.
#pragma once
#include <string_view>

#include "formats/launch_file_format.h"
#include "packager/reading/record_input.h"

namespace quillory::pack {

/// Reads the records at which `input` stands as the launcher does: up to the one named `last`, or
/// all that the file's version has. What is not read is "", 0, false or empty.
LaunchFile readLaunchFile(RecordInput& input, std::string_view last = "");

}  // namespace quillory::pack
