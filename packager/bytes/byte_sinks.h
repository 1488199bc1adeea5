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
  virtual void write(std::string_view bytes) = 0;
};

class StringSink : public ByteSink {
 public:
  void write(std::string_view bytes) override { bytes_.append(bytes); }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

/// A file that gets its name only with commit().
class FileSink : public ByteSink {
 public:
  explicit FileSink(const std::string& path, unsigned mode = 0666);
  void write(std::string_view bytes) override;
  void commit();

 private:
  OutputFile file_;
};

/// Compresses what goes through it.
class LzmaSinkAdapter : public ByteSink {
 public:
  LzmaSinkAdapter(int level, ByteSink& next);
  void write(std::string_view bytes) override;
  /// Says that the content is complete; the rest of the stream is written then.
  void finish();

 private:
  LzmaCoder coder_;
};

/// Copies a whole file into a sink and returns the number of its bytes.
std::uint64_t copyFileInto(ByteSink& sink, const std::string& path);

/// Whether there is a file, or a link to one.
bool isFile(const std::string& path);
/// The whole of a small file.
std::string readWholeFile(const std::string& path);
void writeWholeFile(const std::string& path, std::string_view bytes, unsigned mode = 0666);

}  // namespace quillory::pack
