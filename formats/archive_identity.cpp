#include "formats/archive_identity.h"

#include <algorithm>
#include <array>

#include "formats/archive_format.h"

namespace quillory {
namespace {

static_assert(kIdentityBlockPrefix.starts_with(kSpecialBlockPrefix));

constexpr char kSeparator = ';';
constexpr char kEscape = '%';
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::size_t kFields = 3;

// A '/' would make folders where the entry is skipped, and some systems take '\' for one.
bool isEscaped(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F || c == kSeparator || c == kEscape || c == '/' || c == '\\';
}

std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (!isEscaped(c)) {
      out.push_back(c);
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    out.append({kEscape, kDigits[byte >> 4], kDigits[byte & 15]});
  }
  return out;
}

std::string unescaped(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::size_t high = at + 2 < text.size() ? kDigits.find(text[at + 1]) : kDigits.npos;
    const std::size_t low = at + 2 < text.size() ? kDigits.find(text[at + 2]) : kDigits.npos;
    if (text[at] != kEscape || high == kDigits.npos || low == kDigits.npos) {
      out.push_back(text[at]);
      continue;
    }
    out.push_back(static_cast<char>(high * 16 + low));
    at += 2;
  }
  return out;
}

}  // namespace

std::string identityPath(const ArchiveIdentity& identity) {
  return std::string(kIdentityBlockPrefix) + escaped(identity.component) + kSeparator +
         escaped(identity.version) + kSeparator + escaped(identity.platform);
}

std::optional<ArchiveIdentity> parseIdentityPath(std::string_view path) {
  if (!path.starts_with(kIdentityBlockPrefix)) return std::nullopt;
  std::string_view rest = path.substr(kIdentityBlockPrefix.size());
  std::array<std::string, kFields> fields;
  for (std::string& field : fields) {
    const std::size_t end = std::min(rest.find(kSeparator), rest.size());
    field = unescaped(rest.substr(0, end));
    if (field.empty()) return std::nullopt;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  ArchiveIdentity identity{fields[0], fields[1], fields[2]};
  // There is one spelling only: two texts for one identity would be one more thing to think about.
  if (identityPath(identity) != path) return std::nullopt;
  return identity;
}

std::string asText(const ArchiveIdentity& identity) {
  return escaped(identity.component) + ' ' + escaped(identity.version) + " (" +
         escaped(identity.platform) + ')';
}

std::string_view thisPlatform() { return QUILLORY_PLATFORM; }

bool runsOn(std::string_view packedFor, std::string_view platform) {
  if (packedFor == kAnyPlatform || packedFor == platform) return true;
  return platform.starts_with(packedFor) && platform.substr(packedFor.size()).starts_with('-');
}

}  // namespace quillory
