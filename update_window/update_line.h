// A line of quillory-update: a word, and keys with values, in which bytes other than letters,
// digits and some signs stand as "%" and two hexadecimal digits. docs/formats/update-lines.md has
// them all.
#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace quillory::window {

struct UpdateLine {
  std::string word;
  std::map<std::string, std::string, std::less<>> values;

  /// "" for a key that is not there.
  std::string text(std::string_view key) const;
  /// 0 also for what is no number, and for what is below it.
  std::int64_t number(std::string_view key) const;
};

/// Of a line without its end. What has no '=' behind the word is left out; a '%' that begins no
/// byte stands for itself.
UpdateLine parseUpdateLine(std::string_view line);

}  // namespace quillory::window
