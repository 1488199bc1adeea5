#include "tests/macos/loader/thread_locals.h"

#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/load_error.h"

namespace quillory::loader {
namespace {

struct Descriptor {
  const void* function;
  std::uint64_t key;
  std::uint64_t offset;
};

struct Template {
  const std::uint8_t* begin = nullptr;
  std::size_t initialised = 0;
  std::size_t size = 0;
  pthread_key_t key = 0;
};

Template blocks;
thread_local std::uint8_t* ownBlock = nullptr;

[[noreturn]] void notSetUp() { fail("a thread-local variable before any was set up"); }

}  // namespace

// Called by the function below, with everything saved.
extern "C" void* machoThreadLocal(const Descriptor* descriptor) {
  if (ownBlock == nullptr) {
    constexpr std::size_t kAlignment = 64;
    ownBlock = static_cast<std::uint8_t*>(
        std::aligned_alloc(kAlignment, (blocks.size + kAlignment - 1) / kAlignment * kAlignment));
    std::memcpy(ownBlock, blocks.begin, blocks.initialised);
    std::memset(ownBlock + blocks.initialised, 0, blocks.size - blocks.initialised);
    pthread_setspecific(blocks.key, ownBlock);
  }
  return ownBlock + descriptor->offset;
}

extern "C" void machoThreadLocalEntry();
// fxsave keeps all that a call may change of the vector registers; the state stands on the stack,
// aligned as that wants it.
asm(R"(
  .text
  .globl machoThreadLocalEntry
  .type machoThreadLocalEntry, @function
machoThreadLocalEntry:
  .cfi_startproc
  push %rbp
  .cfi_def_cfa_offset 16
  .cfi_offset %rbp, -16
  mov %rsp, %rbp
  .cfi_def_cfa_register %rbp
  push %rcx
  push %rdx
  push %rsi
  push %rdi
  push %r8
  push %r9
  push %r10
  push %r11
  sub $512, %rsp
  and $-16, %rsp
  fxsave64 (%rsp)
  call machoThreadLocal
  fxrstor64 (%rsp)
  lea -64(%rbp), %rsp
  pop %r11
  pop %r10
  pop %r9
  pop %r8
  pop %rdi
  pop %rsi
  pop %rdx
  pop %rcx
  pop %rbp
  .cfi_def_cfa %rsp, 8
  ret
  .cfi_endproc
  .size machoThreadLocalEntry, .-machoThreadLocalEntry
)");

void setUpThreadLocals(const Image& image) {
  const auto descriptors = image.sectionsOf(kThreadVariables);
  if (descriptors.empty()) return;
  const auto initialised = image.sectionsOf(kThreadRegular);
  const auto zeros = image.sectionsOf(kThreadZeroFill);
  // The linker puts them one behind the other; offsets count from the first.
  const std::uint8_t* begin = nullptr;
  const std::uint8_t* end = nullptr;
  for (const auto& sections : {initialised, zeros}) {
    for (const auto& section : sections) {
      begin =
          begin == nullptr ? section.data() : std::min<const std::uint8_t*>(begin, section.data());
      end = std::max<const std::uint8_t*>(end, section.data() + section.size());
    }
  }
  blocks.begin = begin;
  blocks.size = static_cast<std::size_t>(end - begin);
  blocks.initialised = blocks.size;  // In memory, the others are zeros already.
  pthread_key_create(&blocks.key, std::free);
  for (const auto& section : descriptors) {
    for (std::size_t at = 0; at + sizeof(Descriptor) <= section.size(); at += sizeof(Descriptor)) {
      auto* const descriptor = reinterpret_cast<Descriptor*>(section.data() + at);
      if (descriptor->offset >= blocks.size)
        throw LoadError("a thread-local variable that is not in the block of them");
      descriptor->function = reinterpret_cast<const void*>(machoThreadLocalEntry);
    }
  }
}

const void* threadLocalBootstrap() { return reinterpret_cast<const void*>(notSetUp); }

}  // namespace quillory::loader
