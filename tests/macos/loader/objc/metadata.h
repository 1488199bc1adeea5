// How Apple's compiler writes classes down: the "non-fragile" form, for 64 bits.
#pragma once
#include <cstdint>

namespace quillory::loader {

struct TheirMethod {
  const char* name;
  const char* types;
  void (*function)();
};

struct TheirMethods {
  std::uint32_t sizeAndFlags;  ///< of an entry; the highest bit stands for entries of another form
  std::uint32_t count;
  const TheirMethod* begin() const { return reinterpret_cast<const TheirMethod*>(this + 1); }
};

struct TheirVariable {
  std::uint64_t* offset;  ///< where the code reads it
  const char* name;
  const char* type;
  std::uint32_t alignmentBits;
  std::uint32_t size;
};

struct TheirVariables {
  std::uint32_t entrySize;
  std::uint32_t count;
  const TheirVariable* begin() const { return reinterpret_cast<const TheirVariable*>(this + 1); }
};

struct TheirProtocol {
  const void* isa;
  const char* name;
};

struct TheirProtocols {
  std::uint64_t count;
  TheirProtocol* const* begin() const { return reinterpret_cast<TheirProtocol* const*>(this + 1); }
};

struct TheirClassData {
  std::uint32_t flags;
  std::uint32_t instanceStart;
  std::uint32_t instanceSize;
  std::uint32_t reserved;
  const std::uint8_t* variableLayout;
  const char* name;
  const TheirMethods* methods;
  const TheirProtocols* protocols;
  const TheirVariables* variables;
  const std::uint8_t* weakLayout;
  const void* properties;
};

struct TheirClass {
  TheirClass* isa;
  const void* superclass;  ///< one of theirs, or what the symbol of a class is bound to
  const void* cache;
  const void* table;
  const TheirClassData* data;
};

struct TheirCategory {
  const char* name;
  const void* extended;  ///< like a superclass
  const TheirMethods* instanceMethods;
  const TheirMethods* classMethods;
  const TheirProtocols* protocols;
  const void* properties;
};

struct TheirString {
  const void* isa;
  std::uint64_t flags;
  const void* text;
  std::uint64_t length;
};

static_assert(sizeof(TheirClassData) == 72 && sizeof(TheirClass) == 40);
static_assert(sizeof(TheirVariable) == 32 && sizeof(TheirString) == 32);

}  // namespace quillory::loader
