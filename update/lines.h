// What quillory-update says to the program that has started it: one line an event, flushed.
// docs/formats/update-lines.md has them all.
#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace quillory::update {

/// A line: a word, and keys with values.
class Line {
 public:
  explicit Line(std::string_view word) : text_(word) {}
  Line& with(std::string_view key, std::string_view value) &;
  Line& with(std::string_view key, std::int64_t value) &;
  Line&& with(std::string_view key, std::string_view value) &&;
  Line&& with(std::string_view key, std::int64_t value) &&;
  /// Without a line end.
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

/// What stands in a line as itself: letters, digits and "-._~:/+,". All else is "%" and two
/// hexadecimal digits, byte by byte.
std::string percentEncoded(std::string_view value);

/// Where lines go. Nothing is thrown and no failure told: whoever reads may have gone away, and the
/// update goes on.
using Lines = std::function<void(const Line&)>;

/// To standard output.
void printLine(const Line& line);

}  // namespace quillory::update
