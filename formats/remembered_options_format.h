// The options of the JVM that last worked, once, for who reads and shows them.
// docs/formats/remembered-options.md has the bytes.
#pragma once

namespace quillory {

/// "JRE-LastSuccessfulOptions-<folder name of the JRE>"
inline constexpr char kRememberedOptionsPrefix[] = "JRE-LastSuccessfulOptions-";

/// A count, and that many options.
inline constexpr char kRememberedCountRecord[] = "LSO Count";
inline constexpr char kRememberedEntryRecord[] = "LSO Entry";

}  // namespace quillory
