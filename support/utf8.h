// Telling UTF-8 from other texts.
#pragma once
#include <string_view>

namespace quillory {

/// Whether all of `text` is UTF-8: every character in its shortest form, none of them half of a
/// pair and none beyond U+10FFFF. A zero byte is a character like others. Needs no memory and no
/// library: it can be called before any of them is ready.
bool isUtf8(std::string_view text);

}  // namespace quillory
