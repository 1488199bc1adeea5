#include "tests/macos/loader/dwarf_frames.h"

#include <cstring>
#include <string>

#include "tests/macos/loader/load_error.h"

namespace quillory::loader {
namespace {

constexpr std::uint8_t kOmitted = 0xFF;

class Cursor {
 public:
  explicit Cursor(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::span<const std::uint8_t> rest() const { return bytes_; }

  template <class T>
  T number() {
    T value;
    std::memcpy(&value, take(sizeof value).data(), sizeof value);
    return value;
  }

  std::span<const std::uint8_t> take(std::size_t size) {
    if (size > bytes_.size()) throw LoadError("__eh_frame is cut");
    const auto taken = bytes_.first(size);
    bytes_ = bytes_.subspan(size);
    return taken;
  }

  // One byte holds every number that is met: more are none of ours.
  std::uint8_t small() {
    const auto value = number<std::uint8_t>();
    if (value > 0x7F) throw LoadError("a large number in __eh_frame");
    return value;
  }

  std::string text() {
    std::string result;
    for (char c = number<char>(); c != '\0'; c = number<char>()) result.push_back(c);
    return result;
  }

  /// A pointer in one of DWARF's encodings; `isSize`: it is relative to nothing.
  std::uint64_t pointer(std::uint8_t encoding, bool isSize = false) {
    const auto place = reinterpret_cast<std::uint64_t>(bytes_.data());
    std::uint64_t value = 0;
    switch (encoding & 0x0F) {
      case 0x00:
      case 0x04:
      case 0x0C:
        value = number<std::uint64_t>();
        break;
      case 0x03:
        value = number<std::uint32_t>();
        break;
      case 0x0B:
        value = static_cast<std::uint64_t>(std::int64_t{number<std::int32_t>()});
        break;
      default:
        throw LoadError("an unknown pointer in __eh_frame");
    }
    if (isSize || value == 0) return value;
    if ((encoding & 0x70) == 0x10)
      value += place;
    else if ((encoding & 0x70) != 0)
      throw LoadError("an unknown pointer in __eh_frame");
    if ((encoding & 0x80) != 0)
      std::memcpy(&value, reinterpret_cast<const void*>(value), sizeof value);
    return value;
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

struct Common {
  std::uint64_t personality = 0;
  std::uint8_t functionEncoding = 0;
  std::uint8_t lsdaEncoding = kOmitted;
  std::span<const std::uint8_t> instructions;
};

Common readCommon(Cursor cursor) {
  constexpr std::uint8_t kBytes = 1;
  constexpr std::uint8_t kMinusEight = 0x78;
  constexpr std::uint8_t kReturnAddress = 16;
  Common common;
  if (cursor.small() != 1) throw LoadError("an unknown version of __eh_frame");
  const std::string kinds = cursor.text();
  if (cursor.small() != kBytes || cursor.small() != kMinusEight ||
      cursor.small() != kReturnAddress || !kinds.starts_with('z'))
    throw LoadError("an unknown form of __eh_frame");
  Cursor data(cursor.take(cursor.small()));
  for (const char kind : kinds.substr(1)) {
    switch (kind) {
      case 'L':
        common.lsdaEncoding = data.number<std::uint8_t>();
        break;
      case 'P':
        common.personality = data.pointer(data.number<std::uint8_t>());
        break;
      case 'R':
        common.functionEncoding = data.number<std::uint8_t>();
        break;
      default:
        throw LoadError("an unknown kind of data in __eh_frame");
    }
  }
  common.instructions = cursor.rest();
  return common;
}

DwarfFunction readFunction(Cursor cursor, const Common& common) {
  DwarfFunction function{};
  function.begin = cursor.pointer(common.functionEncoding);
  function.size = cursor.pointer(common.functionEncoding, true);
  Cursor data(cursor.take(cursor.small()));
  if (common.lsdaEncoding != kOmitted && !data.rest().empty())
    function.lsda = data.pointer(common.lsdaEncoding);
  function.personality = common.personality;
  function.commonInstructions = common.instructions;
  function.instructions = cursor.rest();
  return function;
}

// What stands at `at`, behind its length.
std::span<const std::uint8_t> entryAt(std::span<const std::uint8_t> section, std::size_t at) {
  if (at > section.size()) throw LoadError("__eh_frame leads out of itself");
  Cursor cursor(section.subspan(at));
  return cursor.take(cursor.number<std::uint32_t>());
}

}  // namespace

std::vector<DwarfFunction> dwarfFunctions(std::span<const std::uint8_t> section) {
  std::vector<DwarfFunction> functions;
  for (std::size_t at = 0; at + 4 <= section.size();) {
    const auto entry = entryAt(section, at);
    if (entry.empty()) break;
    Cursor cursor(entry);
    // How far back what it has in common with others stands; 0 for that itself.
    const auto back = cursor.number<std::uint32_t>();
    if (back != 0) {
      if (back > at + 4) throw LoadError("__eh_frame leads out of itself");
      Cursor common(entryAt(section, at + 4 - back));
      if (common.number<std::uint32_t>() != 0) throw LoadError("__eh_frame contradicts itself");
      functions.push_back(readFunction(cursor, readCommon(common)));
    }
    at += 4 + entry.size();
  }
  return functions;
}

}  // namespace quillory::loader
