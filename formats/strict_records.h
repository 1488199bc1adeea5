// A record stream whose reader takes nothing that its writer would not write, for files that come
// from a network or that decide what is installed. docs/formats/record-stream.md has the bytes. The
// readers of record_stream.h take what is cut, overlong or no number as well as they can; this one
// stops at the first such value, says why, and gives only "" and 0 from there on.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillory {

/// No number is larger: sums and products with what is small (86400, 100) fit into 64 bits.
inline constexpr std::int64_t kLargestStrictNumber = 999'999'999'999'999;

class StrictRecords {
 public:
  /// `bytes` are borrowed.
  explicit StrictRecords(std::string_view bytes) : bytes_(bytes) {}

  /// The next value: UTF-8 of at most `most` bytes without control characters.
  std::string text(std::string_view name, std::size_t most);
  /// The same with line breaks and tabs.
  std::string lines(std::string_view name, std::size_t most);
  /// The next value: decimal digits without a sign and without zeros in front, at most `most`.
  std::int64_t number(std::string_view name, std::int64_t most = kLargestStrictNumber);

  /// Refuses the stream, unless it has been refused already: "<name>: <what>".
  void refuse(std::string_view name, std::string_view what);
  /// The same where something does not hold.
  void require(bool holds, std::string_view name, std::string_view otherwise) {
    if (!holds) refuse(name, otherwise);
  }
  /// Why the stream is refused, in words; "" as long as it is not.
  const std::string& refusal() const { return refusal_; }
  bool isRefused() const { return !refusal_.empty(); }

  /// How many bytes have been read.
  std::size_t position() const { return at_; }
  bool isAtEnd() const { return at_ == bytes_.size(); }

 private:
  std::string_view next(std::string_view name, std::size_t most);
  std::string textWith(std::string_view name, std::size_t most, std::string_view alsoTaken);

  std::string_view bytes_;
  std::size_t at_ = 0;
  std::string refusal_;
};

}  // namespace quillory
