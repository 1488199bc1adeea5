// The signature blocks behind a record stream that is small enough to be held as a whole: those of
// archives, one or more, each over every byte before it. docs/formats/archive.md has the block.
#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillory {

struct SignatureBlock {
  std::size_t offset = 0;  ///< how many bytes it signs
  std::string_view hex;
};

/// Views of the bytes that were split.
struct SignedBytes {
  std::string_view content;            ///< what stands before the first block
  std::vector<SignatureBlock> blocks;  ///< in their order; empty: the bytes are not signed
};

/// Takes up to `most` blocks off the end, found from there without a look at what is signed. A
/// block counts when nothing follows it and when it stands where it says.
SignedBytes splitSignatureBlocks(std::string_view bytes, std::size_t most);

/// Those of `keysHex` (public keys in DER, in hexadecimal) under which one of the blocks holds, as
/// they were given. What is no key is passed over.
std::vector<std::string> keysThatSigned(const SignedBytes& split,
                                        const std::vector<std::string>& keysHex);

}  // namespace quillory
