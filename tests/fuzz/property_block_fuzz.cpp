// Builds a property block from any bytes and reads it back as its page tells readers to.
#include <cstdint>
#include <vector>

#include "formats/property_block.h"
#include "tests/fuzz/quiet.h"

using quillory::PropertyBlock;
using quillory::fuzz::promise;

namespace {

// Entries of the block, by the rule "the end is where two zero bytes follow each other".
std::vector<std::string> entriesOf(const std::string& bytes) {
  std::vector<std::string> entries;
  if (bytes[0] == '\0') return entries;
  for (std::size_t at = 0; bytes[at] != '\0'; at += entries.back().size() + 1)
    entries.emplace_back(bytes.c_str() + at);
  return entries;
}

// The operation that `code` names, on the block and on a plain list of entries.
void apply(std::uint8_t code, const std::string& text, PropertyBlock& block,
           std::vector<std::string>& entries) {
  const std::string value = text.empty() ? "\x04" : text;
  switch (code % 4) {
    case 0:
      quillory::appendProp(block, text);
      entries.push_back(value);
      return;
    case 1:
      quillory::extendProp(block, text);
      if (!entries.empty()) {
        entries.back() += text;
      } else if (!text.empty()) {
        entries.push_back(text);
      }
      return;
    case 2:
      quillory::addStaticProperty(block, text, text);
      entries.push_back("qystat_" + text);
      entries.push_back(value);
      return;
    default:
      quillory::addDynamicProperty(block, text, text);
      entries.push_back("qydyna_" + text);
      entries.push_back(value);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  PropertyBlock block;
  std::vector<std::string> expected;
  const std::string input(reinterpret_cast<const char*>(data), size);
  for (std::size_t at = 0; at < size;) {
    const std::string text = input.c_str() + at + 1;
    apply(data[at], text, block, expected);
    at += text.size() + 2;
  }
  promise(block.bytes().ends_with(std::string(2, '\0')));
  promise(quillory::propsLen(block) == block.bytes().size() - 2);
  promise(entriesOf(block.bytes()) == expected);
  return 0;
}
