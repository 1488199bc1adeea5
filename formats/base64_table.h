// What base64_decode() decodes with. Made and read by one thread at a time; kept for the rest of
// the run, unless a program that has the function for it takes it away.
#pragma once
#include <array>
#include <memory>

namespace quillory {

using DecodingTable = std::array<unsigned char, 256>;
extern std::unique_ptr<DecodingTable> decodingTable;

}  // namespace quillory
