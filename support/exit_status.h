// Exit statuses of the launcher. docs/operating.md explains each to the person who meets it.
#pragma once

namespace quillory {

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;            ///< every fatal failure that has no own status
inline constexpr int kExitNoProperties = 99;      ///< the launch-properties file cannot be written
inline constexpr int kExitUnpack200Failed = 101;  ///< unpack200 produced no output

/// What an application's JRE-compatibility class returns to say "this JRE will do".
inline constexpr int kExitJreCompatible = 72;

}  // namespace quillory
