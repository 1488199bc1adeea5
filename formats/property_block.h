// The properties handed to the Java application: one flat block of texts, each ended by a zero
// byte, the block ended by a second one. A property is two entries, its key ("qystat_" or "qydyna_"
// and the name) and its value. docs/formats/property-block.md has the bytes.
#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace quillory {

/// What a key begins with, and what stands for an empty text, which would end the block.
inline constexpr std::string_view kStaticPrefix = "qystat_";
inline constexpr std::string_view kDynamicPrefix = "qydyna_";
inline constexpr std::string_view kStoredForEmpty = "\x04";

/// A block that grows as needed. Copying it copies the entries.
class PropertyBlock {
 public:
  /// All bytes, the two final zero bytes included; the empty block is two zero bytes.
  const std::string& bytes() const { return bytes_; }

 private:
  friend void appendProp(PropertyBlock&, std::string_view);
  friend void extendProp(PropertyBlock&, std::string_view);
  std::string bytes_ = std::string(2, '\0');
};

/// Bytes before the final pair of zero bytes: every entry with its terminator but the last one's.
std::size_t propsLen(const PropertyBlock& block);

/// Adds `text` as a new entry. An empty text would end the block, so it is stored as the byte 0x04.
void appendProp(PropertyBlock& block, std::string_view text);

/// Adds `text` to the end of the last entry; never substitutes.
void extendProp(PropertyBlock& block, std::string_view text);

/// Names may repeat, also once static and once dynamic; whoever reads the block decides.
void addStaticProperty(PropertyBlock& block, std::string_view name, std::string_view value);
void addDynamicProperty(PropertyBlock& block, std::string_view name, std::string_view value);

}  // namespace quillory
