// Trees of values as people read them.
#pragma once
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quillory::pack {

/// Indented lines: "name: value", lists with one item a line; values of more than 120 bytes
/// are cut, and what cannot be printed is shown as in C.
std::string asLines(const nlohmann::ordered_json& value);

}  // namespace quillory::pack
