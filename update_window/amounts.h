// Bytes and times as people read them.
#pragma once
#include <cstdint>
#include <string>

namespace quillory::window {

/// "512 bytes", "36 KB", "4.2 MB", "1.3 GB": in thousands, as shops count them; one digit behind
/// the point from a megabyte on.
std::string amountOf(std::int64_t bytes);

/// "12.4 MB of 38.0 MB": with the unit of the whole.
std::string partOf(std::int64_t done, std::int64_t total);

/// "a few seconds left", "about 20 seconds left", "about 3 minutes left", "about 2 hours left".
std::string timeLeft(std::int64_t seconds);

}  // namespace quillory::window
