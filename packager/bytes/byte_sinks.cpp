#include "packager/bytes/byte_sinks.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "packager/report/findings.h"
#include "support/owned.h"

namespace quillory::pack {
namespace {

constexpr std::size_t kCopyBuffer = 256 * 1024;

OwnedFile openForReading(const std::string& path) {
  OwnedFile file(std::fopen(path.c_str(), "rb"));
  if (!file) {
    throwFileError(path, "cannot be opened", errno);
  }
  return file;
}

}  // namespace

FileSink::FileSink(const std::string& path, unsigned mode, Durability durability)
    : file_(path, mode, durability) {
  if (!file_.isOpen()) {
    throw PackError(file_.error());
  }
}

void FileSink::write(std::string_view bytes) {
  if (!file_.write(bytes.data(), bytes.size())) {
    throw PackError(file_.error());
  }
}

void FileSink::commit() {
  if (!file_.commit()) {
    throw PackError(file_.error());
  }
}

LzmaSinkAdapter::LzmaSinkAdapter(int level, ByteSink& next, const LzmaTuning& tuning)
    : coder_(LzmaCoder::encoder(
          level,
          [&next](const unsigned char* data, std::size_t size) {
            next.write({reinterpret_cast<const char*>(data), size});
            return true;
          },
          tuning)) {}

void LzmaSinkAdapter::write(std::string_view bytes) {
  if (!coder_.write(bytes.data(), bytes.size())) {
    throw PackError("compressing failed: " + coder_.error());
  }
}

void LzmaSinkAdapter::finish() {
  if (!coder_.finish()) {
    throw PackError("compressing failed: " + coder_.error());
  }
}

std::uint64_t copyFileInto(ByteSink& sink, const std::string& path) {
  const OwnedFile file = openForReading(path);
  std::vector<char> buffer(kCopyBuffer);
  std::uint64_t total = 0;
  while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
    sink.write({buffer.data(), size});
    total += size;
  }
  if (std::ferror(file.get())) {
    throwFileError(path, "cannot be read", errno);
  }
  return total;
}

bool isFile(const std::string& path) {
  std::error_code unknown;
  return std::filesystem::is_regular_file(path, unknown);
}

std::string readWholeFile(const std::string& path) {
  std::string content = readBeginningOf(path, kLargestWholeFile + 1);
  if (content.size() > kLargestWholeFile) {
    throw PackError(
        "is larger than " + std::to_string(kLargestWholeFile >> 20) + " MiB, or has no end",
        "name another file", {path, 0});
  }
  return content;
}

std::string readBeginningOf(const std::string& path, std::size_t most) {
  const OwnedFile file = openForReading(path);
  std::string content;
  std::vector<char> buffer(kCopyBuffer);
  while (content.size() < most) {
    const std::size_t wanted = std::min(buffer.size(), most - content.size());
    const std::size_t size = std::fread(buffer.data(), 1, wanted, file.get());
    if (size == 0) {
      break;
    }
    content.append(buffer.data(), size);
  }
  if (std::ferror(file.get())) {
    throwFileError(path, "cannot be read", errno);
  }
  return content;
}

void writeWholeFile(const std::string& path, std::string_view bytes, unsigned mode,
                    Durability durability) {
  FileSink file(path, mode, durability);
  file.write(bytes);
  file.commit();
}

}  // namespace quillory::pack
