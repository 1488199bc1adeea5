#include "support/manual_page.h"

namespace quillory {
namespace {

// In the language some characters stand for others that look better in print; here each stands for
// itself, so that what a reader copies is what was written.
std::string_view escapeOf(char c) {
  switch (c) {
    case '\\':
      return "\\e";
    case '-':
      return "\\-";
    case '\'':
      return "\\(aq";
    case '`':
      return "\\(ga";
    case '^':
      return "\\(ha";
    case '~':
      return "\\(ti";
    case '"':
      return "\\(dq";
    default:
      return "";
  }
}

std::string escaped(std::string_view text) {
  std::string all;
  for (const char c : text) {
    const std::string_view escape = escapeOf(c);
    if (escape.empty()) {
      all += c;
    } else {
      all += escape;
    }
  }
  return all;
}

// A line that begins with a dot is a command; the mark before it has no width.
std::string line(std::string_view text) {
  return (text.starts_with('.') ? "\\&" : "") + escaped(text) + '\n';
}

// A text whose line breaks are spaces, and whose lines do not begin with any: such lines break.
std::string filled(std::string_view text) {
  std::string one;
  for (const char c : text) {
    const bool isSpace = c == '\n' || c == ' ';
    if (!isSpace) {
      one += c;
    } else if (!one.empty() && one.back() != ' ') {
      one += ' ';
    }
  }
  return line(one);
}

std::string inQuotes(std::string_view text) { return '"' + escaped(text) + '"'; }

std::string upperCase(std::string_view text) {
  std::string upper;
  for (const char c : text) {
    upper += static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  }
  return upper;
}

}  // namespace

ManualPage::ManualPage(std::string_view name, std::string_view version, std::string_view purpose) {
  text_ = ".TH " + inQuotes(upperCase(name)) + " 1 \"\" " + inQuotes(version) + '\n';
  // Left-aligned, and no word cut: an option that is cut in two cannot be searched for.
  text_ += ".ad l\n.nh\n.SH NAME\n" + escaped(name) + " \\- " + filled(purpose);
}

void ManualPage::beginParagraph() {
  if (!isBelowHeading_) {
    text_ += ".PP\n";
  }
  isBelowHeading_ = false;
}

void ManualPage::heading(std::string_view text) {
  text_ += ".SH " + inQuotes(text) + '\n';
  isBelowHeading_ = true;
}

void ManualPage::subheading(std::string_view text) {
  text_ += ".SS " + inQuotes(text) + '\n';
  isBelowHeading_ = true;
}

void ManualPage::paragraph(std::string_view text) {
  beginParagraph();
  text_ += filled(text);
}

void ManualPage::item(std::string_view name, std::string_view text) {
  isBelowHeading_ = false;
  text_ += ".TP\n.B " + inQuotes(name) + '\n' + filled(text);
}

void ManualPage::literal(std::string_view lines) {
  beginParagraph();
  text_ += ".RS 4\n.nf\n";
  while (!lines.empty()) {
    const std::size_t end = lines.find('\n');
    text_ += line(lines.substr(0, end));
    lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 1);
  }
  text_ += ".fi\n.RE\n";
}

}  // namespace quillory
