// The files that updates are made of, shown for people.
#pragma once
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quillory::pack {

// What is in a file of the kind. Signatures are not checked: it is shown whoever has signed it.
// Each throws PackError when the file is not of the kind, with its reader's reason.
nlohmann::ordered_json describeReleaseList(const std::string& path);
nlohmann::ordered_json describeDelta(const std::string& path);
nlohmann::ordered_json describeUpdateSettings(const std::string& path);

}  // namespace quillory::pack
