#include "platform/gnustep/info_plist.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <system_error>
#include <utility>

#include "support/owned.h"

namespace quillory::platform {
namespace {

constexpr std::size_t kMaxBytes = 1 << 20;

using Entity = std::pair<std::string_view, char>;
constexpr std::array<Entity, 5> kEntities = {
    Entity{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};

constexpr std::string_view kComment = "!--";
constexpr std::string_view kCharacterData = "![CDATA[";

void appendUtf8(std::string& text, std::uint32_t code) {
  constexpr std::uint32_t kPayload = 0x3F;
  const auto append = [&text](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (code < 0x80) return append(code);
  if (code < 0x800) {
    append(0xC0 | code >> 6);
  } else if (code < 0x10000) {
    append(0xE0 | code >> 12);
    append(0x80 | (code >> 6 & kPayload));
  } else {
    append(0xF0 | code >> 18);
    append(0x80 | (code >> 12 & kPayload));
    append(0x80 | (code >> 6 & kPayload));
  }
  append(0x80 | (code & kPayload));
}

// The character of "&#228;" or "&#xe4;" at the front, which is removed; 0 for another front.
std::uint32_t takeNumber(std::string_view& text) {
  constexpr std::uint32_t kLastCharacter = 0x10FFFF;
  if (!text.starts_with("&#")) return 0;
  const bool isHex = text.starts_with("&#x");
  const std::size_t length = text.find(';');
  if (length == std::string_view::npos) return 0;
  const char* const end = text.data() + length;
  std::uint32_t code = 0;
  const auto [behind, error] =
      std::from_chars(text.data() + (isHex ? 3 : 2), end, code, isHex ? 16 : 10);
  const bool isCharacter = code > 0 && code <= kLastCharacter && (code < 0xD800 || code >= 0xE000);
  if (error != std::errc() || behind != end || !isCharacter) return 0;
  text.remove_prefix(length + 1);
  return code;
}

std::string unescaped(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    if (const std::uint32_t code = takeNumber(text); code != 0) {
      appendUtf8(plain, code);
      continue;
    }
    std::size_t taken = 1;
    char next = text.front();
    for (const auto& [escaped, character] : kEntities) {
      if (!text.starts_with(escaped)) continue;
      taken = escaped.size();
      next = character;
    }
    plain.push_back(next);
    text.remove_prefix(taken);
  }
  return plain;
}

// A start or end tag, and the text between it and the tag before. Comments, declarations and
// attributes are passed over.
struct Tag {
  std::string before;
  std::string_view name;
  bool isEnd = false;
  bool isEmpty = false;
};

class Tags {
 public:
  explicit Tags(std::string_view xml) : rest_(xml) {}

  /// False at the end of what can be read.
  bool next(Tag& tag) {
    tag.before.clear();
    for (std::string_view inside; takeText(tag.before) && takeMarkup(inside);) {
      if (inside.starts_with(kComment)) continue;
      if (!inside.starts_with(kCharacterData)) {
        read(inside, tag);
        return true;
      }
      tag.before += inside.substr(kCharacterData.size());
    }
    return false;
  }

 private:
  // What stands before the next '<', which is taken too.
  bool takeText(std::string& text) {
    const std::size_t open = rest_.find('<');
    if (open == std::string_view::npos) return false;
    text += unescaped(rest_.substr(0, open));
    rest_.remove_prefix(open + 1);
    return true;
  }

  // What stands behind that, without its end.
  bool takeMarkup(std::string_view& inside) {
    std::string_view end = ">";
    if (rest_.starts_with(kComment)) end = "-->";
    if (rest_.starts_with(kCharacterData)) end = "]]>";
    const std::size_t close = rest_.find(end);
    if (close == std::string_view::npos) return false;
    inside = rest_.substr(0, close);
    rest_.remove_prefix(close + end.size());
    return true;
  }

  static void read(std::string_view inside, Tag& tag) {
    tag.isEnd = inside.starts_with('/');
    tag.isEmpty = inside.ends_with('/');
    if (tag.isEnd) inside.remove_prefix(1);
    tag.name = inside.substr(0, inside.find_first_of(" \t\r\n/"));
  }

  std::string_view rest_;
};

bool isContainer(std::string_view name) { return name == "dict" || name == "array"; }

}  // namespace

std::map<std::string, std::string> textsOfInfoPlist(std::string_view xml) {
  std::map<std::string, std::string> texts;
  std::string key;
  int depth = 0;
  Tags tags(xml);
  for (Tag tag; tags.next(tag);) {
    if (isContainer(tag.name) && !tag.isEmpty) depth += tag.isEnd ? -1 : 1;
    if (depth != 1 || !tag.isEnd) continue;
    if (tag.name == "key") key = tag.before;
    if (tag.name == "string" && !key.empty()) texts.emplace(key, tag.before);
    if (tag.name != "key") key.clear();
  }
  return texts;
}

std::string infoPlistIn(const std::filesystem::path& contents) {
  const OwnedFile file(std::fopen((contents / "Info.plist").c_str(), "rb"));
  if (file == nullptr) return {};
  std::string text;
  std::array<char, 4096> block;
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
    text.append(block.data(), count);
    if (text.size() > kMaxBytes) return {};
  }
  return text;
}

std::string infoPlistBeside(const std::string& executable) {
  return infoPlistIn(std::filesystem::path(executable).parent_path().parent_path());
}

std::string ownInfoPlist() {
  std::error_code unknown;
  return infoPlistBeside(std::filesystem::read_symlink("/proc/self/exe", unknown));
}

}  // namespace quillory::platform
