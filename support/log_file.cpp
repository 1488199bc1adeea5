#include "support/log_file.h"

namespace quillory {

void LogFile::write(std::string_view line) {
  // Counted before the stream is looked up: whoever retires it afterwards sees this writer.
  use_ += kWriter;
  if (std::FILE* file = current_) {
    std::fwrite(line.data(), 1, line.size(), file);
    std::fflush(file);
  }
  if (use_.fetch_sub(kWriter) == kWriter + kRetired) closeIfUnused();
}

void LogFile::close() {
  std::FILE* file = current_.exchange(nullptr);
  if (file == nullptr) return;
  retired_ = file;
  use_ |= kRetired;
  closeIfUnused();
}

void LogFile::closeIfUnused() {
  std::FILE* const file = retired_;
  int retiredAndUnused = kRetired;
  if (use_.compare_exchange_strong(retiredAndUnused, 0)) std::fclose(file);
}

}  // namespace quillory
