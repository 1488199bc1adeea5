#include "formats/strict_records.h"

#include <algorithm>

#include "support/utf8.h"

namespace quillory {
namespace {

constexpr std::size_t kMostDigits = 15;

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

bool isPlainDecimal(std::string_view text) {
  if (text.empty() || text.size() > kMostDigits) return false;
  if (text.size() > 1 && text.front() == '0') return false;
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

void StrictRecords::refuse(std::string_view name, std::string_view what) {
  if (isRefused()) return;
  refusal_.append(name).append(": ").append(what);
}

std::string_view StrictRecords::next(std::string_view name, std::size_t most) {
  if (isRefused()) return {};
  const std::size_t end = bytes_.find('\0', at_);
  if (end == bytes_.npos) {
    refuse(name, "the file ends here");
    return {};
  }
  const std::string_view value = bytes_.substr(at_, end - at_);
  if (value.size() > most) {
    refuse(name, "it has more than " + std::to_string(most) + " bytes");
    return {};
  }
  at_ = end + 1;
  return value;
}

std::string StrictRecords::textWith(std::string_view name, std::size_t most,
                                    std::string_view alsoTaken) {
  const std::string_view value = next(name, most);
  const bool isClean = std::all_of(value.begin(), value.end(), [&](char c) {
    return !isControl(c) || alsoTaken.find(c) != alsoTaken.npos;
  });
  if (!isClean || !isUtf8(value)) {
    refuse(name, "it is no text");
    return {};
  }
  return std::string(value);
}

std::string StrictRecords::text(std::string_view name, std::size_t most) {
  return textWith(name, most, "");
}

std::string StrictRecords::lines(std::string_view name, std::size_t most) {
  return textWith(name, most, "\n\r\t");
}

std::int64_t StrictRecords::number(std::string_view name, std::int64_t most) {
  const std::string_view digits = next(name, kMostDigits);
  if (isRefused()) return 0;
  if (!isPlainDecimal(digits)) {
    refuse(name, "it is no plain number");
    return 0;
  }
  const std::int64_t value = std::stoll(std::string(digits));
  if (value > most) {
    refuse(name, "it is more than " + std::to_string(most));
    return 0;
  }
  return value;
}

}  // namespace quillory
