// A release list before anything is packed: all that the configuration and earlier lists say.
#pragma once
#include <cstdint>

#include "formats/release_list.h"
#include "packager/commands/release_folder.h"
#include "packager/commands/update_keys.h"
#include "packager/config/config.h"

namespace quillory::pack {

inline constexpr std::int64_t kSecondsOfADay = 24 * 60 * 60;

/// Without components. What was withdrawn stays so. Throws RejectedInput for notes that no list
/// can hold, and a stepping stone that is not in the folder.
ReleaseList plannedList(const Config& config, const ReleaseFolder& folder, const UpdateKeys& keys,
                        std::int64_t number, std::int64_t now);

/// When a list expires that is issued `now`.
std::int64_t expiryOf(const Config& config, std::int64_t now);

}  // namespace quillory::pack
