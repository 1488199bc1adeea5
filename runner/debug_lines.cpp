#include "runner/debug_lines.h"

#include <cstdarg>
#include <cstdio>

namespace quillory {

std::int32_t DEBUG = 0;

void printDebug(const char* format, ...) {
  if (DEBUG == 0) return;
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
}

const char* orNull(const char* text) { return text != nullptr ? text : "(null)"; }

}  // namespace quillory
