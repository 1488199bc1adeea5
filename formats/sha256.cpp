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

void Sha256::update(std::string_view bytes) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  std::size_t left = bytes.size();
  const auto takeSlowly = [&](std::size_t count) {
    if (count > 0) sha256_process(&state_, data, count);
    data += count;
    left -= count;
  };
  if (blocks_ != nullptr) {
    auto& sha256 = state_.sha256;
    takeSlowly(std::min(left, (kHashedBlock - sha256.curlen) % kHashedBlock));
    if (sha256.curlen == 0) {
      const std::size_t count = left / kHashedBlock;
      blocks_(sha256.state, data, count);
      sha256.length += count * kHashedBlock * 8;
      data += count * kHashedBlock;
      left -= count * kHashedBlock;
    }
  }
  takeSlowly(left);
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
