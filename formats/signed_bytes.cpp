#include "formats/signed_bytes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>

#include "formats/archive_format.h"
#include "formats/archive_signature.h"
#include "formats/record_stream.h"
#include "formats/text_encodings.h"
#include "support/owned.h"

namespace quillory {
namespace {

// The records of a block, last one first.
enum BlockRecord { kHex, kPlace, kLength, kPath, kType, kBlockRecords };

bool isHex(std::string_view text) {
  return !text.empty() && text.size() % 2 == 0 && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
  });
}

// The last record of the bytes, which it is taken off; nothing when they do not end with one.
std::optional<std::string_view> takeLastRecord(std::string_view& bytes) {
  if (bytes.empty() || bytes.back() != '\0') return std::nullopt;
  bytes.remove_suffix(1);
  const std::size_t before = bytes.rfind('\0');
  const std::size_t start = before == bytes.npos ? 0 : before + 1;
  const std::string_view record = bytes.substr(start);
  bytes.remove_suffix(record.size());
  return record;
}

// The block that the bytes end with, which they then end before.
std::optional<SignatureBlock> takeLastBlock(std::string_view& bytes) {
  std::string_view rest = bytes;
  std::array<std::string_view, kBlockRecords> records;
  for (std::string_view& record : records) {
    const std::optional<std::string_view> last = takeLastRecord(rest);
    if (!last) return std::nullopt;
    record = *last;
  }
  if (records[kPath] != kSignatureBlockPath || records[kType] != "0" || records[kLength] != "1")
    return std::nullopt;
  if (records[kPlace] != std::to_string(rest.size())) return std::nullopt;
  if (records[kHex].size() > longestValue(kCheckedHexCapacity) || !isHex(records[kHex]))
    return std::nullopt;
  bytes = rest;
  return SignatureBlock{rest.size(), records[kHex]};
}

struct HeldKey {
  explicit HeldKey(const std::string& hex) {
    const std::vector<unsigned char> der = bytesOfHex(hex);
    isThere = isHex(hex) && importPublicKey(der.data(), static_cast<int>(der.size()), &key);
  }
  HeldKey(const HeldKey&) = delete;
  HeldKey& operator=(const HeldKey&) = delete;
  ~HeldKey() {
    if (isThere) rsa_free(&key);
  }

  Rsa_key key{};
  bool isThere = false;
};

using Digest = std::unique_ptr<unsigned char, HeapFreer>;

// Null when the library cannot make one.
Digest digestOf(std::string_view bytes) {
  Hash_state state;
  std::memset(&state, 0, sizeof(state));
  if (!initHash(&state)) return nullptr;
  if (!updateHash(&state, reinterpret_cast<const unsigned char*>(bytes.data()),
                  static_cast<int>(bytes.size())))
    return nullptr;
  return Digest(doFinal(&state));
}

}  // namespace

SignedBytes splitSignatureBlocks(std::string_view bytes, std::size_t most) {
  SignedBytes split{bytes, {}};
  while (split.blocks.size() < most) {
    const std::optional<SignatureBlock> block = takeLastBlock(split.content);
    if (!block) break;
    split.blocks.insert(split.blocks.begin(), *block);
  }
  return split;
}

std::vector<std::string> keysThatSigned(const SignedBytes& split,
                                        const std::vector<std::string>& keysHex) {
  std::vector<std::string> holding;
  std::vector<Digest> digests;
  std::vector<std::vector<unsigned char>> signatures;
  for (const SignatureBlock& block : split.blocks) {
    // What a block signs begins where the content does.
    digests.push_back(digestOf({split.content.data(), block.offset}));
    signatures.push_back(bytesOfHex(std::string(block.hex)));
  }
  for (const std::string& hex : keysHex) {
    HeldKey held(hex);
    for (std::size_t i = 0; held.isThere && i < digests.size(); ++i) {
      if (!digests[i] ||
          matchSignature(signatures[i].data(), static_cast<int>(signatures[i].size()),
                         digests[i].get(), &held.key) != SignatureMatch::kMatches)
        continue;
      holding.push_back(hex);
      break;
    }
  }
  return holding;
}

}  // namespace quillory
