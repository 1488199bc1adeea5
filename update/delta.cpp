#include "update/delta.h"

#include <string_view>
#include <utility>
#include <vector>

#include "formats/sha256.h"
#include "lzma/raw_lzma2.h"
#include "support/output_file.h"
#include "support/plain_file.h"
#include "update/base_files.h"

namespace quillory::update {
namespace {

constexpr std::size_t kPiece = 256 * 1024;

// "" when the delta is the one that the task means.
std::string otherThanMeant(const DeltaHeader& header, const DeltaTask& task) {
  if (header.component != task.component || header.from != task.from || header.to != task.to)
    return "it leads from " + header.component + ' ' + header.from + " to " + header.to;
  if (header.restoredLength != task.restoredLength || header.restoredSha256 != task.restoredSha256)
    return "it restores another archive";
  return "";
}

// One run, from the files and the stream to the archive.
class Undoing {
 public:
  Undoing(const DeltaTask& task, const DeltaHeader& header)
      : task_(task),
        header_(header),
        base_(task.installedFolder, task.home),
        out_(task.out, 0600, Durability::kLeftToTheSystem),
        decoder_(static_cast<std::uint64_t>(header.window),
                 [this](const unsigned char* data, std::size_t size) {
                   return takeStream({reinterpret_cast<const char*>(data), size});
                 }) {}

  DeltaResult run(std::size_t streamAt) {
    if (!out_.error().empty()) return {DeltaEnd::kNotWritten, out_.error()};
    if (!learn() || !copyWhatIsDue() || !readStream(streamAt) || !isAsItShould()) return explain();
    if (!out_.commit()) return {DeltaEnd::kNotWritten, out_.error()};
    return {};
  }

 private:
  bool fail(DeltaEnd end, std::string reason) {
    if (failure_.isRestored()) failure_ = {end, std::move(reason)};
    return false;
  }

  bool learn() {
    for (const BaseFile& file : header_.dictionary) {
      bool isKnown = true;
      const std::string fault = base_.read(file, [&](std::string_view bytes) {
        isKnown = decoder_.know(bytes) && tell();
        return isKnown;
      });
      if (!fault.empty()) return fail(DeltaEnd::kBaseChanged, fault);
      if (!isKnown) return failByDecoder();
    }
    return true;
  }

  bool readStream(std::size_t streamAt) {
    const OwnedFile file = openPlainFile(task_.delta);
    if (!file || std::fseek(file.get(), static_cast<long>(streamAt), SEEK_SET) != 0)
      return fail(DeltaEnd::kUnusable, "it cannot be read");
    std::vector<char> piece(kPiece);
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get()))
      if (!decoder_.write(piece.data(), count)) return failByDecoder();
    if (std::ferror(file.get()) != 0) return fail(DeltaEnd::kUnusable, "it cannot be read");
    return decoder_.finish() || failByDecoder();
  }

  bool failByDecoder() {
    const bool isShortOfMemory = decoder_.error() == kOutOfMemory;
    return fail(isShortOfMemory ? DeltaEnd::kTooMuchMemory : DeltaEnd::kUnusable, decoder_.error());
  }

  // What comes out of the stream belongs before, between and behind the copies.
  bool takeStream(std::string_view bytes) {
    while (!bytes.empty()) {
      std::string_view now = bytes;
      if (nextCopy_ < header_.copies.size())
        now = now.substr(
            0, static_cast<std::size_t>(header_.copies[nextCopy_].streamLength - sinceCopy_));
      if (!put(now)) return false;
      sinceCopy_ += static_cast<std::int64_t>(now.size());
      bytes.remove_prefix(now.size());
      if (!copyWhatIsDue()) return false;
    }
    return true;
  }

  bool copyWhatIsDue() {
    for (; nextCopy_ < header_.copies.size(); ++nextCopy_) {
      const DeltaCopy& copy = header_.copies[nextCopy_];
      if (copy.streamLength != sinceCopy_) return true;
      sinceCopy_ = 0;
      const std::string fault =
          base_.read(copy.file, [this](std::string_view bytes) { return put(bytes); });
      if (!fault.empty()) return fail(DeltaEnd::kBaseChanged, fault);
      if (!failure_.isRestored()) return false;
    }
    return true;
  }

  bool put(std::string_view bytes) {
    length_ += static_cast<std::int64_t>(bytes.size());
    if (length_ > header_.restoredLength)
      return fail(DeltaEnd::kUnusable, "it makes more than it says");
    digest_.update(bytes);
    if (!out_.write(bytes.data(), bytes.size())) return fail(DeltaEnd::kNotWritten, out_.error());
    return tell();
  }

  bool tell() {
    return !task_.progress || task_.progress(length_) || fail(DeltaEnd::kCancelled, "cancelled");
  }

  bool isAsItShould() {
    if (nextCopy_ < header_.copies.size() || length_ != header_.restoredLength)
      return fail(DeltaEnd::kUnusable, "it makes less than it says");
    return digest_.hex() == header_.restoredSha256 ||
           fail(DeltaEnd::kUnusable, "what it makes has another SHA-256 than it says");
  }

  // Each byte is hashed once, where it is written. Only when that went wrong does it matter which
  // of the files is not what it was.
  DeltaResult explain() const {
    if (failure_.end != DeltaEnd::kUnusable) return failure_;
    for (const BaseFile& file : header_.dictionary)
      if (std::string fault = base_.differenceOf(file); !fault.empty())
        return {DeltaEnd::kBaseChanged, std::move(fault)};
    for (const DeltaCopy& copy : header_.copies)
      if (std::string fault = base_.differenceOf(copy.file); !fault.empty())
        return {DeltaEnd::kBaseChanged, std::move(fault)};
    return failure_;
  }

  const DeltaTask& task_;
  const DeltaHeader& header_;
  BaseFiles base_;
  OutputFile out_;
  RawLzma2Decoder decoder_;
  Sha256 digest_;
  DeltaResult failure_;
  std::size_t nextCopy_ = 0;
  std::int64_t sinceCopy_ = 0;  ///< bytes of the stream since the last copy
  std::int64_t length_ = 0;     ///< bytes of the archive that are there
};

}  // namespace

DeltaResult undoDelta(const DeltaTask& task) {
  const DeltaHeaderResult read = readDeltaHeader(task.delta);
  if (!read.header) return {DeltaEnd::kUnusable, read.refusal};
  if (std::string other = otherThanMeant(*read.header, task); !other.empty())
    return {DeltaEnd::kUnusable, std::move(other)};
  if (memoryToUndo(*read.header) > task.memoryLimit)
    return {DeltaEnd::kTooMuchMemory,
            "it takes " + std::to_string(memoryToUndo(*read.header) >> 20) + " MiB of memory"};
  return Undoing(task, *read.header).run(read.length);
}

}  // namespace quillory::update
