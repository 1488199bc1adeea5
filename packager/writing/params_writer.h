// Writes the parameters file: the dynamic parameters of a bundle, which can be changed without
// signing its code again. docs/formats/parameters-file.md has the bytes.
#pragma once
#include "formats/params_format.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

/// Marker, count and pairs. Throws PackError, naming the pair, when a text does not fit its record,
/// as the sink does when it is full.
void writeParameters(ByteSink& sink, const Parameters& parameters);

}  // namespace quillory::pack
