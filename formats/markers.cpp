#include "formats/markers.h"

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "formats/marker_search.h"
#include "formats/text_encodings.h"
#include "support/log.h"
#include "support/owned.h"

namespace quillory {
namespace {

// The markers stand in the program as digits, not as bytes: a program that is searched for its tail
// must not hold the marker itself, wherever a compiler puts its constants.
constexpr std::string_view kTailMarkerDigits =
    "1d432a505b7a1f642347212417323c50216c0466295c297b0b5b19332f4f0f4d"
    "2758182415394e792b7615593d574900112905652b1070665e2d406075433008"
    "614a747e401b533b5646371e4b2c725930443a3c2f44782b2665717139732523"
    "101451243170104a0d05572a060a53214d2c130036291a74472d1a552c2f4263";
constexpr std::string_view kParamsMarkerDigits =
    "59bdc952aa35adbb10efde672c47e0b5d4821f8152a102442aebaa7b793b9345"
    "aed2097a3e2f2efaff1df09b197c15b81e6dc610417e5ced51b1191c3ce294d8";

static_assert(kTailMarkerDigits.size() == 2 * kTailMarkerLength);
static_assert(kParamsMarkerDigits.size() == 2 * kParamsMarkerLength);

char* allocFromDigits(std::string_view digits, int length) {
  const int capacity = length + 1;  // hexToBytes() ends its output with a zero byte.
  OwnedText marker(static_cast<char*>(std::calloc(static_cast<std::size_t>(capacity), 1)));
  hexToBytes(reinterpret_cast<unsigned char*>(marker.get()), capacity, digits.data());
  return marker.release();
}

std::string fromDigits(std::string_view digits) {
  const std::vector<unsigned char> bytes = bytesOfHex(std::string(digits));
  return {bytes.begin(), bytes.end()};
}

constexpr std::size_t kBlockLength = 1 << 16;

}  // namespace

char* allocAndInitMarker() { return allocFromDigits(kTailMarkerDigits, kTailMarkerLength); }

char* allocAndInitParamsMarker() {
  return allocFromDigits(kParamsMarkerDigits, kParamsMarkerLength);
}

std::string tailMarker() { return fromDigits(kTailMarkerDigits); }

std::string paramsMarker() { return fromDigits(kParamsMarkerDigits); }

std::uint32_t scanToMarker(std::FILE* stream, const char* marker, int length, const char* name) {
  if (length <= 0) return 0;

  MarkerSearch search({marker, static_cast<std::size_t>(length)});
  // What was read too much is given back by a seek; a pipe can take nothing back.
  const bool canSeek = std::fseek(stream, 0, SEEK_CUR) == 0;
  std::vector<char> block(canSeek ? kBlockLength : 1);
  std::size_t consumed = 0;
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), stream)) {
    const std::size_t taken = search.take({block.data(), count});
    consumed += taken;
    if (search.isFound()) {
      std::fseek(stream, static_cast<long>(taken) - static_cast<long>(count), SEEK_CUR);
      return static_cast<std::uint32_t>(consumed);
    }
  }
  logMessage("Could not find marker: %s\n", name);
  return kMarkerNotFound;
}

}  // namespace quillory
