// The arguments of the command that is being put together.
#pragma once
#include <vector>

namespace quillory {

/// Room of the command's list, with the null that ends it, and of the list of one import.
inline constexpr int kArgumentCapacity = 500;
inline constexpr int kImportCapacity = 100;

/// Argument slots: heap blocks of `argsiz` bytes, each a text of at most `argsiz` - 1 bytes, at the
/// front of a fixed number of pointers, the rest of which are null or left over from a move. The
/// first `count` belong to the list.
struct ArgumentList {
  explicit ArgumentList(int capacity) : slots(static_cast<std::size_t>(capacity), nullptr) {}
  ~ArgumentList();
  ArgumentList(const ArgumentList&) = delete;
  ArgumentList& operator=(const ArgumentList&) = delete;

  /// How many pointers there are, used or not.
  int capacity() const { return static_cast<int>(slots.size()); }
  char*& operator[](int position) { return slots[static_cast<std::size_t>(position)]; }

  std::vector<char*> slots;
  int count = 0;
};

/// The list of a command: one pointer is kept for the null at its end.
inline ArgumentList commandList() { return ArgumentList(kArgumentCapacity - 1); }

}  // namespace quillory
