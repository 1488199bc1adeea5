#include "platform/gnustep/info_plist.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <utility>

#include "support/owned.h"

namespace quillory::platform {
namespace {

constexpr std::size_t kMaxBytes = 1 << 20;

using Entity = std::pair<std::string_view, char>;
constexpr std::array<Entity, 5> kEntities = {
    Entity{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};

std::string unescaped(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
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
  std::string_view before;
  std::string_view name;
  bool isEnd = false;
  bool isEmpty = false;
};

class Tags {
 public:
  explicit Tags(std::string_view xml) : rest_(xml) {}

  /// False at the end of what can be read.
  bool next(Tag& tag) {
    const std::size_t open = rest_.find('<');
    if (open == std::string_view::npos) return false;
    tag.before = rest_.substr(0, open);
    rest_.remove_prefix(open + 1);
    const bool isComment = rest_.starts_with("!--");
    const std::string_view end = isComment ? "-->" : ">";
    const std::size_t close = rest_.find(end);
    if (close == std::string_view::npos) return false;
    read(rest_.substr(0, close), tag);
    rest_.remove_prefix(close + end.size());
    return true;
  }

 private:
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
    if (tag.name == "key") key = unescaped(tag.before);
    if (tag.name == "string" && !key.empty()) texts.emplace(key, unescaped(tag.before));
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

}  // namespace quillory::platform
