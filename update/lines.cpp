#include "update/lines.h"

#include <cstdio>

namespace quillory::update {
namespace {

bool standsAsItself(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("-._~:/+,").find(c) != std::string_view::npos;
}

}  // namespace

std::string percentEncoded(std::string_view value) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : value) {
    if (standsAsItself(c)) {
      encoded += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    encoded += '%';
    encoded += kDigits[byte >> 4];
    encoded += kDigits[byte & 15];
  }
  return encoded;
}

Line& Line::with(std::string_view key, std::string_view value) & {
  text_ += ' ';
  text_ += key;
  text_ += '=';
  text_ += percentEncoded(value);
  return *this;
}

Line& Line::with(std::string_view key, std::int64_t value) & {
  return with(key, std::to_string(value));
}

Line&& Line::with(std::string_view key, std::string_view value) && {
  return std::move(with(key, value));
}

Line&& Line::with(std::string_view key, std::int64_t value) && {
  return std::move(with(key, value));
}

void printLine(const Line& line) {
  std::printf("%s\n", line.text().c_str());
  std::fflush(stdout);
}

}  // namespace quillory::update
