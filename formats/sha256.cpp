#include "formats/sha256.h"

#include <algorithm>
#include <array>
#include <vector>

#include "formats/text_encodings.h"
#include "support/plain_file.h"

namespace quillory {
namespace {

constexpr std::size_t kChunk = 256 * 1024;
constexpr std::size_t kHashedBlock = 64;
constexpr int kDigestLength = 32;
static_assert(sizeof(ulong32) == sizeof(std::uint32_t));

}  // namespace

Sha256::Sha256(Sha256Blocks blocks) : blocks_(blocks) { sha256_init(&state_); }

int processSha256(hash_state* state, const unsigned char* data, std::size_t length,
                  Sha256Blocks blocks) {
  // What the library refuses, it is left to refuse.
  if (blocks == nullptr || state == nullptr || state->sha256.length + length < length)
    return sha256_process(state, data, length);
  auto& sha256 = state->sha256;
  const std::size_t open = sha256.curlen == 0 ? 0 : kHashedBlock - sha256.curlen % kHashedBlock;
  const std::size_t first = std::min(length, open);
  const int result = sha256_process(state, data, first);
  if (result != CRYPT_OK) return result;
  const std::size_t count = (length - first) / kHashedBlock;
  blocks(sha256.state, data + first, count);
  sha256.length += count * kHashedBlock * 8;
  const std::size_t taken = first + count * kHashedBlock;
  return sha256_process(state, data + taken, length - taken);
}

void Sha256::update(std::string_view bytes) {
  if (bytes.empty()) return;
  processSha256(&state_, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                blocks_);
}

std::string Sha256::hex() {
  std::array<unsigned char, kDigestLength> digest;
  sha256_done(&state_, digest.data());
  std::array<char, 2 * kDigestLength + 1> text;
  bytesToHex(text.data(), digest.data(), kDigestLength);
  return text.data();
}

std::string sha256Hex(std::string_view bytes) {
  Sha256 digest;
  digest.update(bytes);
  return digest.hex();
}

std::optional<HashedFile> hashFile(const std::string& path) {
  const OwnedFile file = openPlainFile(path);
  if (!file) return std::nullopt;
  Sha256 digest;
  HashedFile hashed;
  std::vector<char> chunk(kChunk);
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file.get())) {
    digest.update({chunk.data(), count});
    hashed.length += static_cast<std::int64_t>(count);
  }
  if (std::ferror(file.get()) != 0) return std::nullopt;
  hashed.sha256 = digest.hex();
  return hashed;
}

bool isSha256Hex(std::string_view text) {
  return text.size() == kSha256HexLength && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

}  // namespace quillory
