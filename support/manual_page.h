// Manual pages: texts of a program, in the language that man(1) reads (groff and mandoc alike).
#pragma once
#include <string>
#include <string_view>

namespace quillory {

/// A page, written from top to bottom. Every text given may hold any character: nothing in it can
/// become a command of the language. A line break in a text is only a space; in literal() it stays.
class ManualPage {
 public:
  /// `name` is the program's, and `purpose` goes on behind a dash, without a full stop; `version`
  /// stands at the foot of each page. The section is 1, of commands.
  ManualPage(std::string_view name, std::string_view version, std::string_view purpose);

  void heading(std::string_view text);
  void subheading(std::string_view text);
  void paragraph(std::string_view text);
  /// Something that is explained: its name in bold, and indented below it the text.
  void item(std::string_view name, std::string_view text);
  /// Lines as they stand, indented: a command line, an example.
  void literal(std::string_view lines);

  const std::string& text() const { return text_; }

 private:
  void beginParagraph();

  std::string text_;
  bool isBelowHeading_ = false;  ///< which begins a paragraph of its own
};

}  // namespace quillory
