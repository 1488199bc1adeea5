// Writes the parameters file: the dynamic parameters of a bundle, which can be changed without
// signing its code again. docs/formats/parameters.md has the bytes.
#pragma once
#include <string>
#include <utility>
#include <vector>

#include "packager/byte_sinks.h"

namespace quillory::pack {

/// Where the launcher looks for it first, under Contents/.
inline constexpr char kParamsPath[] = "Resources/AppParams.excludefromsigning";

/// Name and value, in the order of the file. Names may repeat: the last one counts where the
/// launcher interprets them.
using Parameters = std::vector<std::pair<std::string, std::string>>;

void writeParameters(ByteSink& sink, const Parameters& parameters);

/// The 64 bytes before the records.
std::string paramsMarker();

}  // namespace quillory::pack
