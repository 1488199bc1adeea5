#include "platform/gnustep/late_classes.h"

#include <objc/runtime.h>

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

// What the compiler emits for a file with classes, as far as it matters here.
struct EmittedClass {
  const void* metaclass;
  const char* superclassName;  // Null in a root class.
};

struct EmittedSymbols {
  unsigned long selectorCount;
  const void* selectors;
  unsigned short classCount;
  unsigned short categoryCount;
  const EmittedClass* classes[1];  // As many as there are, and the categories behind them.
};

struct EmittedModule {
  unsigned long version;
  unsigned long size;
  const char* name;
  const EmittedSymbols* symbols;
};

extern "C" {
void __real___objc_exec_class(EmittedModule* module);
void __wrap___objc_exec_class(EmittedModule* module);
}

namespace {

constexpr unsigned long kKnownVersion = 8;  // Of the runtime's binary interface.

// Made by the first use: files register their classes in no particular order.
std::vector<EmittedModule*>& putOff() {
  static std::vector<EmittedModule*> modules;
  return modules;
}

bool hasUnknownSuperclass(const EmittedModule& module) {
  if (module.version != kKnownVersion || module.symbols == nullptr) return false;
  const std::span classes(module.symbols->classes, module.symbols->classCount);
  return std::ranges::any_of(classes, [](const EmittedClass* emitted) {
    return emitted->superclassName != nullptr &&
           objc_lookUpClass(emitted->superclassName) == nullptr;
  });
}

// Without it there is no class of a constant string yet, either.
bool isFoundationThere() { return objc_lookUpClass("NSObject") != nullptr; }

}  // namespace

void __wrap___objc_exec_class(EmittedModule* module) {
  if (!isFoundationThere() || hasUnknownSuperclass(*module)) {
    putOff().push_back(module);
  } else {
    __real___objc_exec_class(module);
  }
}

namespace quillory::platform {

void registerLateClasses() {
  for (EmittedModule* module : std::exchange(putOff(), {})) __wrap___objc_exec_class(module);
}

}  // namespace quillory::platform
