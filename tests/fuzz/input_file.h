// An input as a file, for readers that take a path. It is in memory only.
#pragma once
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace quillory::fuzz {

class InputFile {
 public:
  InputFile(const std::uint8_t* data, std::size_t size) : file_(memfd_create("input", 0)) {
    if (file_ < 0 || write(file_, data, size) != static_cast<ssize_t>(size)) std::abort();
  }
  ~InputFile() { close(file_); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

}  // namespace quillory::fuzz
