// The names in the file of a start of a version that has not yet proved itself, once, for who
// writes and who reads it. docs/formats/update-trials.md says what is in it.
#pragma once

namespace quillory {

/// The folder, in the one that a user's starts write to.
inline constexpr char kTrialsFolder[] = "QYUpdates";
/// "try-" and what the name of the start's launch-properties file ends with.
inline constexpr char kTryPrefix[] = "try-";
/// The line of the end: this and the status.
inline constexpr char kTryEnded[] = "ended ";

}  // namespace quillory
