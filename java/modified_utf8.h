// Text as the Java Native Interface takes it.
#pragma once
#include <string>
#include <string_view>

namespace quillory {

/// `bytes`, which should be UTF-8, in the modified UTF-8 of NewStringUTF() and FindClass(): a
/// character beyond U+FFFF becomes two surrogates of three bytes each. What is not UTF-8 becomes
/// U+FFFD, one for each longest part that could have begun a character, as in Java's own decoder.
std::string toModifiedUtf8(std::string_view bytes);

}  // namespace quillory
