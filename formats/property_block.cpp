#include "formats/property_block.h"

namespace quillory {
namespace {

constexpr std::size_t kEndLength = 2;

// A zero byte inside a text would be read as the end of its entry, or of the block.
std::string_view untilZeroByte(std::string_view text) { return text.substr(0, text.find('\0')); }

void addProperty(PropertyBlock& block, std::string_view prefix, std::string_view name,
                 std::string_view value) {
  appendProp(block, prefix);
  extendProp(block, name);
  appendProp(block, value);
}

}  // namespace

std::size_t propsLen(const PropertyBlock& block) { return block.bytes().size() - kEndLength; }

void appendProp(PropertyBlock& block, std::string_view text) {
  const std::size_t length = propsLen(block);
  const std::string_view entry = untilZeroByte(text);
  block.bytes_.resize(length == 0 ? 0 : length + 1);  // The last entry keeps its terminator.
  block.bytes_.append(entry.empty() ? kStoredForEmpty : entry);
  block.bytes_.append(kEndLength, '\0');
}

void extendProp(PropertyBlock& block, std::string_view text) {
  block.bytes_.insert(propsLen(block), untilZeroByte(text));
}

void addStaticProperty(PropertyBlock& block, std::string_view name, std::string_view value) {
  addProperty(block, kStaticPrefix, name, value);
}

void addDynamicProperty(PropertyBlock& block, std::string_view name, std::string_view value) {
  addProperty(block, kDynamicPrefix, name, value);
}

}  // namespace quillory
