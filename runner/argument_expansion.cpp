#include "runner/argument_expansion.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "runner/config_entry.h"
#include "runner/debug_lines.h"
#include "support/owned.h"
#include "support/strings.h"

namespace quillory {
namespace {

void moveArgument(ArgumentList& list, int from, int to, char direction) {
  printDebug("%c Moving %s to %s\n", direction, orNull(list[from]), orNull(list[to]));
  list[to] = list[from];
}

// Puts the imported slots, which change hands, in the place of the argument at `position`.
void replaceBy(ArgumentList& imported, ArgumentList& list, int position) {
  std::free(list[position]);
  list[position] = nullptr;
  for (int i = position; i < list.count - 1; ++i) moveArgument(list, i + 1, i, '<');
  --list.count;
  for (int i = list.count - 1; i >= position; --i) moveArgument(list, i, i + imported.count, '>');
  std::copy_n(imported.slots.begin(), imported.count, list.slots.begin() + position);
  list.count += imported.count;
  imported.count = 0;
}

// What stands between the '[' at the front and the next ']', or the end.
std::string importName(std::string_view argument) {
  return std::string(argument.substr(1, argument.find(']') - 1));
}

int importEntry(const std::string& name, ArgumentList& list, int position) {
  const OwnedFile file(std::fopen(kConfigFile, "rb"));
  if (file == nullptr) {
    std::printf("could not find config file for import: %s\n", kConfigFile);
    return kEntryMissing;
  }
  ArgumentList imported(kImportCapacity);
  const int found = readEntry(file.get(), name.c_str(), imported);
  if (found == kEntryMissing) std::puts("could not find import entry");
  if (found != kEntryFound) return found;
  printDebug("found import entry OK (%d args)\n", imported.count);
  for (int i = 0; i < imported.count; ++i) printDebug("IMPARG:%s\n", imported[i]);
  if (list.count - 1 + imported.count > list.capacity()) {
    std::printf("too many arguments with import entry %s: at most %d\n", name.c_str(),
                list.capacity());
    return kListFull;
  }
  replaceBy(imported, list, position);
  return kEntryFound;
}

// `text` with the variable between the percent signs at `open` and `close` replaced.
std::string withVariableReplaced(const std::string& text, std::size_t open, std::size_t close) {
  const std::string name = text.substr(open + 1, close - open - 1);
  const char* value = std::getenv(name.c_str());
  printDebug("ENV:%s->%s\n", name.c_str(), orNull(value));
  if (value == nullptr) return text;
  std::string replaced = text.substr(0, open) + value + text.substr(close + 1);
  replaced.resize(std::min<std::size_t>(replaced.size(), argsiz - 1));
  return replaced;
}

std::string withVariablesReplaced(std::string text) {
  std::size_t position = 0;
  while (position < text.size()) {
    const std::size_t open = text.find('%', position);
    if (open == std::string::npos) break;
    const std::size_t close = text.find('%', open + 1);
    if (close == std::string::npos) break;
    text = withVariableReplaced(text, open, close);
    position = close + 1;  // of the text as it was, see the header
  }
  return text;
}

}  // namespace

int replaceImportStrings(ArgumentList& list) {
  for (int i = 0; i < list.count; ++i) {
    if (list[i][0] != '[') continue;
    const std::string name = importName(list[i]);
    printDebug("Found import request for %s\n", name.c_str());
    if (importEntry(name, list, i) == kListFull) return kListFull;
  }
  return kEntryFound;
}

void replaceEnvStrings(ArgumentList& list) {
  for (int i = 0; i < list.count; ++i) {
    const std::string replaced = withVariablesReplaced(list[i]);
    std::memset(list[i], 0, argsiz);
    std::memcpy(list[i], replaced.data(), replaced.size());
  }
}

}  // namespace quillory
