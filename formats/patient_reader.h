// Reading a known number of bytes from a file that may still be on its way: an archive that is not
// yet complete is waited for, for as long as it takes. The log says once what is being waited for.
#pragma once
#include <cstddef>
#include <cstdio>
#include <string>

namespace quillory {

class PatientReader {
 public:
  /// `what` completes the log line "[ExtractArchive] Waiting for the rest of ...". The stream is
  /// borrowed.
  PatientReader(std::FILE* stream, std::string what);

  /// Up to `size` bytes, at least one; 0 only for a `size` of 0.
  std::size_t read(char* buffer, std::size_t size);

 private:
  void waitForMore();

  std::FILE* stream_;
  std::string what_;
  bool told_ = false;
};

}  // namespace quillory
