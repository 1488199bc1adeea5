// Times as people read them.
#pragma once
#include <cstdint>
#include <string>

namespace quillory::pack {

/// "2026-11-22 04:36 UTC", from seconds since 1970.
std::string readableTime(std::int64_t seconds);

}  // namespace quillory::pack
