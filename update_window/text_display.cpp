#include "update_window/text_display.h"

namespace quillory::window {

void TextDisplay::show(const WindowContent& content) {
  if (content.heading != heading_) write_(content.heading);
  heading_ = content.heading;
  const int tenth = static_cast<int>(content.fraction * 10);
  const bool isNewText = content.text != text_;
  if (!isNewText && tenth == tenth_) return;
  text_ = content.text;
  tenth_ = tenth;
  write_("  " + content.text + (content.detail.empty() ? "" : "  " + content.detail));
}

}  // namespace quillory::window
