// Where the writers put their bytes. Sinks stack: records into an archive, through a digest,
// through the LZMA encoder, into a file. Every sink throws PackError when it cannot take the bytes.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "lzma/lzma_alone.h"
#include "support/output_file.h"

namespace quillory::pack {

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  /// Takes all of the bytes, or throws.
  virtual void write(std::string_view bytes) = 0;
};

/// Keeps what it gets.
class StringSink : public ByteSink {
 public:
  void write(std::string_view bytes) override { bytes_.append(bytes); }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

/// A file that gets its name only with commit(). Without it nothing of the file is left, and what
/// stood at its place stays.
class FileSink : public ByteSink {
 public:
  /// `mode` is that of the finished file, less the process's umask. Throws PackError where no file
  /// can be made, and where a folder stands.
  explicit FileSink(const std::string& path, unsigned mode = 0666,
                    Durability durability = Durability::kFlushed);
  void write(std::string_view bytes) override;
  /// Throws PackError when the rest cannot be written, as on a full disk, or the file not be put in
  /// place.
  void commit();

 private:
  OutputFile file_;
};

/// Compresses what goes through it.
class LzmaSinkAdapter : public ByteSink {
 public:
  /// `level` is 0 to 9; any other is an error of write() and finish(). `next` is borrowed.
  LzmaSinkAdapter(int level, ByteSink& next, const LzmaTuning& tuning = {});
  void write(std::string_view bytes) override;
  /// Says that the content is complete; the rest of the stream is written then.
  void finish();

 private:
  LzmaCoder coder_;
};

/// Copies a whole file into a sink and returns the number of its bytes. Throws PackError, naming
/// the file, when it cannot be read, and what the sink throws.
std::uint64_t copyFileInto(ByteSink& sink, const std::string& path);

/// Whether there is a file, or a link to one.
bool isFile(const std::string& path);
/// The whole of a small file. Throws PackError, naming it, when it cannot be read, and when it has
/// more than kLargestWholeFile bytes, as a device has that never ends.
std::string readWholeFile(const std::string& path);
inline constexpr std::size_t kLargestWholeFile = 64 * 1024 * 1024;
/// Up to `most` bytes of it. Throws PackError, naming it, when it cannot be read.
std::string readBeginningOf(const std::string& path, std::size_t most);
/// Writes a file as FileSink does: all of it, or PackError and what was there before.
void writeWholeFile(const std::string& path, std::string_view bytes, unsigned mode = 0666,
                    Durability durability = Durability::kFlushed);

}  // namespace quillory::pack
