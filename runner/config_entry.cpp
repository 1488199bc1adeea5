#include "runner/config_entry.h"

#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "runner/debug_lines.h"
#include "support/paths.h"
#include "support/strings.h"

namespace quillory {
namespace {

// The name or the value of a line: a zero-filled block of one slot's size.
struct LinePart {
  std::vector<char> text = std::vector<char>(argsiz, '\0');
  std::size_t length = 0;
  bool isCut = false;

  // False at the first byte that finds no room, the 1,024th; those behind it are dropped without a
  // word: one message tells all that there is to be told.
  bool append(char byte) {
    if (length == text.size() - 1) return std::exchange(isCut, true);
    text[length++] = byte;
    return true;
  }
};

struct Line {
  LinePart name;
  LinePart value;
  bool isInValue = false;

  void append(char byte) {
    if (!isInValue && byte == ':') {
      isInValue = true;
    } else if (isInValue && !value.append(byte)) {
      std::puts("Config entry command too large");
      printDebug("Config entry command too large %s[%s]\n", name.text.data(), value.text.data());
    } else if (!isInValue && !name.append(byte)) {
      std::puts("Config entry name too large");
      printDebug("Config entry name too large %s\n", name.text.data());
    }
  }
};

// One after another, the lines that have a line end: whatever follows the last one is no line.
bool readLine(std::FILE* file, Line& line) {
  line = {};
  for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file)) {
    if (byte == '\n' || byte == '\r') return true;
    line.append(static_cast<char>(byte));
  }
  return false;
}

}  // namespace

int readEntry(std::FILE* file, const char* name, ArgumentList& list) {
  int result = kEntryMissing;
  Line line;
  while (readLine(file, line)) {
    chopExe(line.name.text.data());
    printDebug("%s[%s]\n", line.name.text.data(), line.value.text.data());
    if (std::strcmp(line.name.text.data(), name) != 0 || result == kListFull) continue;
    // A list has so many places and no more. A command without its last arguments would be another
    // command, so none is run.
    if (list.count == list.capacity()) {
      std::printf("too many arguments in config entry %s: at most %d\n", name, list.capacity());
      result = kListFull;
      continue;
    }
    addArgs(list.slots.data(), &list.count, line.value.text.data());
    result = kEntryFound;
  }
  return result;
}

}  // namespace quillory
