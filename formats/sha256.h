// SHA-256, as release lists and deltas name files by it: 64 lower-case hexadecimal digits.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "formats/sha256_blocks.h"
#include "formats/tomcrypt.h"

namespace quillory {

/// The digits of a digest.
inline constexpr std::size_t kSha256HexLength = 64;

/// As the library's sha256_process(), with the same results; whole blocks by `blocks`, unless null.
int processSha256(hash_state* state, const unsigned char* data, std::size_t length,
                  Sha256Blocks blocks);

class Sha256 {
 public:
  /// By the processor's instructions where it has them; tests give null to do without.
  explicit Sha256(Sha256Blocks blocks = sha256BlocksOfProcessor());
  void update(std::string_view bytes);
  /// The digest of what came so far; nothing may follow.
  std::string hex();

 private:
  hash_state state_;
  Sha256Blocks blocks_;
};

/// Of all bytes.
std::string sha256Hex(std::string_view bytes);

/// A file's content.
struct HashedFile {
  std::int64_t length = 0;
  std::string sha256;
};
/// Nothing when there is no plain file (support/plain_file.h), or it cannot be read to its end.
std::optional<HashedFile> hashFile(const std::string& path);

/// Whether the text could be one: 64 digits, letters in lower case.
bool isSha256Hex(std::string_view text);

}  // namespace quillory
