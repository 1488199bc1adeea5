#include "tests/macos/loader/imports.h"

#include <map>

#include "tests/macos/loader/cocoa/stand_ins.h"
#include "tests/macos/loader/objc/bridge.h"
#include "tests/macos/loader/system/same.h"
#include "tests/macos/loader/system/tables.h"
#include "tests/macos/loader/thread_locals.h"

namespace quillory::loader {
namespace {

using Table = std::map<std::string_view, const void*>;

Table allOf(std::initializer_list<Symbols> parts) {
  Table table;
  for (const Symbols part : parts)
    for (const Symbol& symbol : part) table.emplace(symbol.name, symbol.address);
  return table;
}

const void* systemSymbol(std::string_view symbol) {
  static const Table table =
      allOf({copySymbols(), fileSymbols(), folderSymbols(), librarySymbols(), localeSymbols(),
             machineSymbols(), processSymbols(), signalSymbols(), streamSymbols(), textSymbols(),
             threadSymbols()});
  if (const auto found = table.find(symbol); found != table.end()) return found->second;
  if (symbol == "__tlv_bootstrap") return threadLocalBootstrap();
  return symbol.starts_with('_') ? sameSymbol(symbol.substr(1)) : nullptr;
}

const void* cocoaSymbol(std::string_view symbol) {
  static const Table table = allOf({frameworkSymbols(), messageSymbols(), runtimeSymbols()});
  if (const auto found = table.find(symbol); found != table.end()) return found->second;
  if (symbol == "___CFConstantStringClassReference") return constantStringClass();
  if (const void* found = classSymbol(symbol)) return found;
  return symbol.starts_with('_') ? appKitSymbol(symbol.substr(1)) : nullptr;
}

}  // namespace

// The main queue is libSystem's.
const void* findImport(std::string_view symbol, std::string_view library) {
  const bool isSystem = library == "/usr/lib/libSystem.B.dylib";
  if (isSystem)
    if (const void* found = systemSymbol(symbol)) return found;
  return isSystem && symbol.find("dispatch") == symbol.npos ? nullptr : cocoaSymbol(symbol);
}

}  // namespace quillory::loader
