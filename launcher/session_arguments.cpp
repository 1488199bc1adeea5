#include "launcher/session_arguments.h"

#include <algorithm>
#include <string_view>

namespace quillory {

int withoutSessionArguments(int count, char** arguments) {
  if (count < 2) return count;
  char** const end = std::remove_if(arguments + 1, arguments + count, [](const char* argument) {
    return std::string_view(argument).starts_with("-psn_");
  });
  *end = nullptr;
  return static_cast<int>(end - arguments);
}

}  // namespace quillory
