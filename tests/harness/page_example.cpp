#include "tests/harness/page_example.h"

#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace quillory::testing {
namespace {

constexpr std::string_view kOpeningFence = "```hexdump\n";
constexpr std::string_view kClosingFence = "```\n";

std::string readPage(std::string_view page) {
  const std::string path = QUILLORY_SOURCE_DIR "/docs/" + std::string(page);
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

void appendBytesOf(const std::string& line, std::string& bytes) {
  static const std::regex kLine("([0-9]+) {2,}((?:[0-9a-f]{2})(?: [0-9a-f]{2})*)(?:(?: {2,}.*)|)");
  std::smatch parts;
  if (!std::regex_match(line, parts, kLine)) throw std::runtime_error("not a dump line: " + line);
  if (std::stoull(parts[1]) != bytes.size())
    throw std::runtime_error("this line begins at " + std::to_string(bytes.size()) + ": " + line);

  std::istringstream pairs(parts[2]);
  for (std::string pair; pairs >> pair;)
    bytes.push_back(static_cast<char>(std::stoi(pair, nullptr, 16)));
}

}  // namespace

std::string parseHexDump(std::string_view lines) {
  std::string bytes;
  std::istringstream input{std::string(lines)};
  for (std::string line; std::getline(input, line);) appendBytesOf(line, bytes);
  return bytes;
}

std::string pageExample(std::string_view page, int number) {
  const std::string text = readPage(page);
  std::size_t begin = 0;
  for (int found = 0; found < number; ++found) {
    begin = text.find(kOpeningFence, begin);
    if (begin == std::string::npos)
      throw std::runtime_error("no such example: " + std::string(page));
    begin += kOpeningFence.size();
  }
  const std::size_t end = text.find(kClosingFence, begin);
  if (end == std::string::npos) throw std::runtime_error("open example: " + std::string(page));
  return parseHexDump(std::string_view(text).substr(begin, end - begin));
}

}  // namespace quillory::testing
