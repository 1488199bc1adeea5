#include "formats/text_encodings.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "formats/base64_table.h"
#include "support/log.h"
#include "support/owned.h"

namespace quillory {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// What sscanf() makes of the text with "%2x". Two digits, the only thing that writers produce, are
// taken without it: it measures the whole rest of the text for every pair.
std::optional<unsigned char> pairAt(const char* text) {
  const int high = hexDigit(text[0]);
  const int low = high < 0 ? -1 : hexDigit(text[1]);
  if (low >= 0) return static_cast<unsigned char>(high * 16 + low);

  unsigned value = 0;
  if (std::sscanf(text, "%2x", &value) != 1) return std::nullopt;
  return static_cast<unsigned char>(value & 0xFF);
}

constexpr unsigned char kOutsideAlphabet = 0xFF;

// "=" counts as 0 wherever it stands.
unsigned char sextetOf(char c) {
  return c == kPadding ? 0 : (*decodingTable)[static_cast<unsigned char>(c)];
}

std::size_t decodedLength(std::string_view text) {
  if (text.empty()) return 0;
  std::size_t length = text.size() / 4 * 3;
  if (text[text.size() - 1] == kPadding) --length;
  if (text[text.size() - 2] == kPadding) --length;
  return length;
}

void decodeGroups(std::string_view text, char* out, std::size_t length) {
  std::size_t written = 0;
  for (std::size_t at = 0; at < text.size(); at += 4) {
    unsigned group = 0;
    for (std::size_t i = 0; i < 4; ++i) group = group << 6 | sextetOf(text[at + i]);
    for (int shift = 16; shift >= 0 && written < length; shift -= 8)
      out[written++] = static_cast<char>(group >> shift & 0xFF);
  }
}

}  // namespace

std::unique_ptr<DecodingTable> decodingTable;

int bytesToHex(char* out, const unsigned char* data, int count) {
  if (count < 1) return 2 * count;
  for (int i = 0; i < count; ++i) {
    *out++ = kHexDigits[data[i] >> 4];
    *out++ = kHexDigits[data[i] & 0xF];
  }
  *out = '\0';
  return 2 * count;
}

int hexToBytes(unsigned char* out, int capacity, const char* hex) {
  const std::size_t length = std::strlen(hex);
  const int room = std::max(capacity - 1, 0);
  int count = 0;
  for (std::size_t at = 0; at < length; at += 2) {
    const std::optional<unsigned char> byte = pairAt(hex + at);
    if (!byte) break;
    if (count < room) out[count] = *byte;
    ++count;
  }
  const int stored = std::min(count, room);
  if (capacity > 0) out[stored] = 0;
  if (count >= capacity)
    logMessage("[Utils] ERROR - HexToBytes is writing too far! %d %d\n", count, capacity);
  return stored;
}

std::vector<unsigned char> bytesOfHex(const std::string& hex) {
  // Room for a byte of an odd last digit, and for the zero byte.
  std::vector<unsigned char> bytes(hex.size() / 2 + 2);
  const int count = hexToBytes(bytes.data(), static_cast<int>(bytes.size()), hex.c_str());
  bytes.resize(static_cast<std::size_t>(count));
  return bytes;
}

void build_decoding_table() {
  decodingTable = std::make_unique<DecodingTable>();
  decodingTable->fill(kOutsideAlphabet);
  for (std::size_t i = 0; i < kBase64Alphabet.size(); ++i)
    (*decodingTable)[static_cast<unsigned char>(kBase64Alphabet[i])] =
        static_cast<unsigned char>(i);
}

char* base64_decode(const char* text, std::size_t length, std::size_t* outLength) {
  *outLength = 0;
  if (!decodingTable) build_decoding_table();
  if (length % 4 != 0) {
    logMessage("[Extractor] Base64 deconding failed as input_length is not aligned\n");
    return nullptr;
  }
  const std::string_view input(text, length);
  const auto stranger = std::find_if(input.begin(), input.end(),
                                     [](char c) { return sextetOf(c) == kOutsideAlphabet; });
  if (stranger != input.end()) {
    logMessage("[Extractor] Base64 deconding failed as the character at %td is not base64\n",
               stranger - input.begin());
    return nullptr;
  }

  const std::size_t decoded = decodedLength(input);
  OwnedText block(static_cast<char*>(std::malloc(std::max<std::size_t>(decoded, 1))));
  if (!block) {
    logMessage("[Extractor] Base64 deconding failed as malloc failed to init %d\n",
               static_cast<int>(decoded));
    return nullptr;
  }
  decodeGroups(input, block.get(), decoded);
  *outLength = decoded;
  return block.release();
}

}  // namespace quillory
