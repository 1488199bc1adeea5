// objc_msgSend and its relatives: they look the method up, and jump there with every argument where
// it was. A message to nil answers 0, also as a floating-point number; a structure that would be
// returned through a pointer stays as it was.
#include <objc/message.h>
#include <objc/runtime.h>

#include "tests/macos/loader/objc/bridge.h"

namespace quillory::loader {

/// What the image gives for a message to super: the class that the method stands in.
struct TheirSuper {
  id receiver;
  Class current;
};

extern "C" {

// Called by the functions below, with every argument saved.
IMP machoMethod(id receiver, SEL selector) { return objc_msg_lookup(receiver, selector); }

IMP machoSuperMethod(const TheirSuper* super, SEL selector) {
  objc_super ours = {super->receiver, class_getSuperclass(super->current)};
  return objc_msg_lookup_super(&ours, selector);
}

void machoSend();
void machoSendStruct();
void machoSendSuper();
void machoSendSuperStruct();
}

// The 8 registers of integers' arguments and rax, which counts those in vector registers for a
// method with "..."; then the 8 vector registers. 0xD0 bytes keep the stack aligned.
asm(R"(
  .macro keep_arguments
  push %rbp
  .cfi_def_cfa_offset 16
  .cfi_offset %rbp, -16
  mov %rsp, %rbp
  .cfi_def_cfa_register %rbp
  sub $0xD0, %rsp
  mov %rdi, 0x00(%rsp)
  mov %rsi, 0x08(%rsp)
  mov %rdx, 0x10(%rsp)
  mov %rcx, 0x18(%rsp)
  mov %r8, 0x20(%rsp)
  mov %r9, 0x28(%rsp)
  mov %rax, 0x30(%rsp)
  movaps %xmm0, 0x40(%rsp)
  movaps %xmm1, 0x50(%rsp)
  movaps %xmm2, 0x60(%rsp)
  movaps %xmm3, 0x70(%rsp)
  movaps %xmm4, 0x80(%rsp)
  movaps %xmm5, 0x90(%rsp)
  movaps %xmm6, 0xA0(%rsp)
  movaps %xmm7, 0xB0(%rsp)
  .endm

  .macro jump_with_arguments
  mov %rax, %r11
  mov 0x00(%rsp), %rdi
  mov 0x08(%rsp), %rsi
  mov 0x10(%rsp), %rdx
  mov 0x18(%rsp), %rcx
  mov 0x20(%rsp), %r8
  mov 0x28(%rsp), %r9
  mov 0x30(%rsp), %rax
  movaps 0x40(%rsp), %xmm0
  movaps 0x50(%rsp), %xmm1
  movaps 0x60(%rsp), %xmm2
  movaps 0x70(%rsp), %xmm3
  movaps 0x80(%rsp), %xmm4
  movaps 0x90(%rsp), %xmm5
  movaps 0xA0(%rsp), %xmm6
  movaps 0xB0(%rsp), %xmm7
  leave
  .cfi_def_cfa %rsp, 8
  jmp *%r11
  .endm

  .text
  .globl machoSend, machoSendStruct, machoSendSuper, machoSendSuperStruct

machoSend:
  .cfi_startproc
  test %rdi, %rdi
  jz 1f
  keep_arguments
  call machoMethod
  jump_with_arguments
1:
  xor %eax, %eax
  xor %edx, %edx
  xorps %xmm0, %xmm0
  xorps %xmm1, %xmm1
  ret
  .cfi_endproc

machoSendStruct:
  .cfi_startproc
  test %rsi, %rsi
  jz 1f
  keep_arguments
  mov %rsi, %rdi
  mov %rdx, %rsi
  call machoMethod
  jump_with_arguments
1:
  mov %rdi, %rax
  ret
  .cfi_endproc

# The receiver takes the place of the pointer to both.
machoSendSuper:
  .cfi_startproc
  keep_arguments
  call machoSuperMethod
  mov 0x00(%rsp), %r11
  mov (%r11), %r11
  mov %r11, 0x00(%rsp)
  jump_with_arguments
  .cfi_endproc

machoSendSuperStruct:
  .cfi_startproc
  keep_arguments
  mov %rsi, %rdi
  mov %rdx, %rsi
  call machoSuperMethod
  mov 0x08(%rsp), %r11
  mov (%r11), %r11
  mov %r11, 0x08(%rsp)
  jump_with_arguments
  .cfi_endproc
)");

Symbols messageSymbols() {
  static const Symbol kSymbols[] = {
      {"_objc_msgSend", code(machoSend)},
      {"_objc_msgSendSuper2", code(machoSendSuper)},
      {"_objc_msgSendSuper2_stret", code(machoSendSuperStruct)},
      {"_objc_msgSend_fpret", code(machoSend)},
      {"_objc_msgSend_stret", code(machoSendStruct)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
