// The parameters file, once, for who reads, writes and shows it. docs/formats/parameters-file.md
// has the bytes.
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace quillory {

inline constexpr char kParamsCountRecord[] = "Params Count";
inline constexpr char kParamNameRecord[] = "Param Name";
inline constexpr char kParamValueRecord[] = "Param Value";
inline constexpr int kParamValueCapacity = 200000;

/// Name and value, in the order of the file. Names may repeat: the last one counts where the
/// launcher interprets them.
using Parameters = std::vector<std::pair<std::string, std::string>>;

/// Where the file stands in the bundle's Resources: the first is outside of what is code-signed,
/// and wins.
inline constexpr char kParamsFileName[] = "AppParams.excludefromsigning";
inline constexpr char kLocalizedParamsFolder[] = "params.lproj";
inline constexpr char kLocalizedParamsFileName[] = "locversion.plist";

}  // namespace quillory
