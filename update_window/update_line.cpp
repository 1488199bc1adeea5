#include "update_window/update_line.h"

#include <algorithm>
#include <charconv>

namespace quillory::window {
namespace {

std::string decoded(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    unsigned byte = 0;
    const char* const digits = value.data() + i + 1;
    if (value[i] == '%' && i + 2 < value.size() &&
        std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      text += static_cast<char>(byte);
      i += 2;
    } else {
      text += value[i];
    }
  }
  return text;
}

/// The part before the next blank, which is taken away with it.
std::string_view takePart(std::string_view& line) {
  const std::size_t end = std::min(line.find(' '), line.size());
  const std::string_view part = line.substr(0, end);
  line.remove_prefix(std::min(end + 1, line.size()));
  return part;
}

}  // namespace

std::string UpdateLine::text(std::string_view key) const {
  const auto found = values.find(key);
  return found == values.end() ? "" : found->second;
}

std::int64_t UpdateLine::number(std::string_view key) const {
  const std::string digits = text(key);
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return error == std::errc() && value > 0 ? value : 0;
}

UpdateLine parseUpdateLine(std::string_view line) {
  UpdateLine parsed;
  parsed.word = takePart(line);
  while (!line.empty()) {
    const std::string_view part = takePart(line);
    const std::size_t equals = part.find('=');
    if (equals != std::string_view::npos)
      parsed.values[std::string(part.substr(0, equals))] = decoded(part.substr(equals + 1));
  }
  return parsed;
}

}  // namespace quillory::window
