// The example of a format page, so that what the page shows is what is read. An example is a fenced
// block of the language "hexdump" in docs/:
//
//     ```hexdump
//     0  31 00        type 1: folder
//     2  6c 69 62 00  path "lib"
//     ```
//
// A line is the decimal offset of its first byte, two spaces or more, the bytes with one space
// between them, and behind two spaces or more whatever the reader should know.
#pragma once
#include <string>
#include <string_view>

namespace quillory::testing {

/// The bytes of the `number`-th example (from 1) of docs/<page>, as in "formats/archive.md". Throws
/// std::runtime_error when it is missing or malformed, also when an offset is not where it says.
std::string pageExample(std::string_view page, int number = 1);

/// The bytes of the lines between the fences.
std::string parseHexDump(std::string_view lines);

}  // namespace quillory::testing
