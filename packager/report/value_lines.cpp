#include "packager/report/value_lines.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace quillory::pack {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kShownValue = 120;

// A text on one line, with what cannot be printed as in C.
std::string shown(const std::string& text) {
  std::string line;
  for (const char c : text.substr(0, kShownValue)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      line += c;
    } else {
      static constexpr char kDigits[] = "0123456789abcdef";
      line += c == '\n'   ? "\\n"
              : c == '\t' ? "\\t"
                          : std::string("\\x") + kDigits[byte >> 4] + kDigits[byte & 15];
    }
  }
  return text.size() > kShownValue ? line + "... (" + std::to_string(text.size()) + " bytes)"
                                   : line;
}

std::string scalar(const Json& value) {
  if (value.is_string()) {
    const std::string text = shown(value.get<std::string>());
    return text.empty() ? "-" : text;
  }
  return value.is_boolean() ? (value.get<bool>() ? "yes" : "no") : value.dump();
}

void appendLines(const Json& value, const std::string& indent, std::string& out);

// "file  lib/a.jar  1234" for entries, "name = value" for pairs.
std::string itemLine(const Json& item) {
  if (!item.is_object()) {
    return scalar(item);
  }
  if (item.contains("name") && item.contains("value")) {
    const std::string kind = item.contains("kind") ? scalar(item["kind"]) + ' ' : "";
    return kind + scalar(item["name"]) + " = " + shown(item["value"].get<std::string>());
  }
  std::string line;
  for (const auto& [key, part] : item.items()) {
    if (!part.is_structured()) {
      std::string text = scalar(part);
      if (key == "type") {
        text.resize(std::max<std::size_t>(text.size(), 7), ' ');
      }
      line += (line.empty() ? "" : "  ") + text;
    }
  }
  return line;
}

void appendLines(const Json& value, const std::string& indent, std::string& out) {
  for (const auto& [key, part] : value.items()) {
    if (!part.is_structured()) {
      out += indent + key + ": " + scalar(part) + '\n';
    } else if (part.is_object()) {
      out += indent + key + ":\n";
      appendLines(part, indent + "  ", out);
    } else {
      out += indent + key + (part.empty() ? ": none\n" : ":\n");
      for (const Json& item : part) {
        out += indent + "  " + itemLine(item) + '\n';
        if (item.is_object() && item.contains("archive")) {
          appendLines(item["archive"], indent + "      ", out);
        }
      }
    }
  }
}

}  // namespace

std::string asLines(const Json& value) {
  std::string out;
  appendLines(value, "", out);
  return out;
}

}  // namespace quillory::pack
