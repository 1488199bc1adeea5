// Decodes any text, into buffers that are exactly as large as they are said to be.
#include <algorithm>
#include <string>
#include <vector>

#include "formats/text_encodings.h"
#include "support/owned.h"
#include "tests/fuzz/quiet.h"

using quillory::fuzz::promise;

namespace {

void decodeHex(const std::string& text, int capacity) {
  std::vector<unsigned char> out(static_cast<std::size_t>(capacity));
  const int count = quillory::hexToBytes(out.data(), capacity, text.c_str());
  promise(count >= 0 && (count < capacity || capacity == 0));
  if (capacity > 0) promise(out[static_cast<std::size_t>(count)] == 0);
}

void decodeBase64(const std::string& text) {
  std::size_t length = 0;
  const quillory::OwnedText block(quillory::base64_decode(text.data(), text.size(), &length));
  promise(block || length == 0);
  promise(length <= text.size() / 4 * 3);
  const std::string copy(block.get(), length);  // Touches every byte that was promised.
}

void encodeAndDecode(const std::uint8_t* data, std::size_t size) {
  std::vector<char> hex(2 * size + 1);
  quillory::bytesToHex(hex.data(), data, static_cast<int>(size));
  std::vector<unsigned char> back(size + 1);
  const int count = quillory::hexToBytes(back.data(), static_cast<int>(back.size()), hex.data());
  promise(static_cast<std::size_t>(count) == size && std::equal(data, data + size, back.begin()));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  decodeHex(text, data[0]);
  decodeHex(text, static_cast<int>(text.size() / 2 + 2));
  decodeBase64(text);
  if (size > 1) encodeAndDecode(data + 1, size - 1);
  return 0;
}
