#include "packager/config/toml_limits.h"

#include <algorithm>

namespace quillory::pack {
namespace {

constexpr char kAdvice[] =
    "a configuration of an application is much smaller: look at what wrote it";

// Goes over a text and counts; what stands in quotes and in comments does not count.
class Counter {
 public:
  explicit Counter(std::string_view text) : text_(text) {}

  /// What is too much, from here on; "" at the end of the text. The line is where it is.
  std::string run() {
    while (at_ < text_.size()) {
      const char c = text_[at_];
      if (c == '"' || c == '\'') {
        skipQuoted(c);
      } else if (c == '#') {
        skipTo(text_.find('\n', at_));
      } else {
        count(c);
        ++at_;
      }
      if (depth_ > kDeepestToml || dots_ >= kDeepestToml) {
        return "goes more than " + std::to_string(kDeepestToml) +
               " levels deep, in lists, tables or the parts of a name";
      }
      if (values_ > kMostTomlValues) {
        return "has more than " + std::to_string(kMostTomlValues) + " values";
      }
    }
    return "";
  }

  unsigned line() const {
    return 1 + static_cast<unsigned>(std::count(text_.begin(), text_.begin() + offset(at_), '\n'));
  }

 private:
  static std::string_view::difference_type offset(std::size_t at) {
    return static_cast<std::string_view::difference_type>(at);
  }

  void skipTo(std::size_t place) { at_ = std::min(place, text_.size()); }

  void count(char c) {
    if (c == '[' || c == '{') {
      ++depth_;
    } else if (c == ']' || c == '}') {
      depth_ = std::max(depth_ - 1, 0);
    }
    if (c == '=' || c == ',' || c == '[') {
      ++values_;
    }
    // A name ends with any of these, and in a value there are few dots.
    if (c == '.') {
      ++dots_;
    } else if (c == '\n' || c == '=' || c == ',' || c == '[' || c == '{') {
      dots_ = 0;
    }
  }

  // At the first quote; afterwards behind the last one. A text of one line ends with the line, also
  // where the quote is missing: that is an error, and nothing behind it may be overlooked.
  void skipQuoted(char quote) {
    const std::string three(3, quote);
    const bool isLong = text_.substr(at_).starts_with(three);
    at_ += isLong ? 3 : 1;
    while (at_ < text_.size()) {
      if (text_[at_] == '\\' && quote == '"') {
        at_ += 2;
      } else if (isLong ? text_.substr(at_).starts_with(three) : text_[at_] == quote) {
        at_ += isLong ? 3 : 1;
        skipQuotesInLongText(isLong, quote);
        return;
      } else if (text_[at_] == '\n' && !isLong) {
        return;
      } else {
        ++at_;
      }
    }
    skipTo(at_);
  }

  // Up to two quotes right before the last three belong to the text.
  void skipQuotesInLongText(bool isLong, char quote) {
    for (int i = 0; isLong && i < 2 && at_ < text_.size() && text_[at_] == quote; ++i) {
      ++at_;
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
  int depth_ = 0;
  int dots_ = 0;
  int values_ = 0;
};

}  // namespace

std::optional<Finding> excessOfToml(const std::string& file, std::string_view text) {
  if (text.size() > kLargestTomlFile) {
    return Finding{Severity::kError,
                   "toml-limit",
                   "the file is larger than " + std::to_string(kLargestTomlFile) + " bytes",
                   {file, 0},
                   kAdvice};
  }
  Counter counter(text);
  const std::string excess = counter.run();
  if (excess.empty()) {
    return std::nullopt;
  }
  return Finding{
      Severity::kError, "toml-limit", "the file " + excess, {file, counter.line()}, kAdvice};
}

}  // namespace quillory::pack
