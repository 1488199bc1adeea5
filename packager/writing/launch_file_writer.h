// Writes the launch file "QuilloryLaunch" of a version folder. docs/formats/launch-file.md has the
// records; formats/launch_file_format.h has them for its readers, too.
#pragma once
#include <string>

#include "formats/launch_file_format.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

/// Writes all records, whatever `file` says of its version: that of the file is the newest. Throws
/// PackError when a value does not fit its record.
void writeLaunchFile(ByteSink& sink, const LaunchFile& file);
std::string launchFileBytes(const LaunchFile& file);

}  // namespace quillory::pack
