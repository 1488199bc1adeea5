#include "formats/delta_header.h"

#include <algorithm>
#include <utility>

#include "formats/release_fields.h"
#include "formats/release_list_format.h"
#include "formats/sha256.h"
#include "formats/strict_records.h"
#include "support/plain_file.h"

namespace quillory {
namespace {

constexpr std::size_t kFirstLook = 64 * 1024;

class HeaderReader {
 public:
  explicit HeaderReader(std::string_view bytes) : records_(bytes) {}

  DeltaHeaderResult read() {
    DeltaHeader header;
    readWhat(header);
    readDictionary(header);
    readCopies(header);
    if (records_.isRefused()) return {{}, 0, records_.refusal()};
    return {std::move(header), records_.position(), ""};
  }

 private:
  void readWhat(DeltaHeader& header) {
    if (records_.number(kDeltaVersionRecord) != kDeltaVersion)
      records_.refuse(kDeltaVersionRecord, "the delta was made by a newer quillory-pack");
    header.component = readFileName(records_, kDeltaComponentRecord);
    header.from = readVersion(records_, kDeltaFromRecord);
    header.to = readVersion(records_, kDeltaToRecord);
    header.baseSha256 = readSha256(records_, kDeltaBaseRecord);
    header.restoredLength = records_.number(kRestoredLengthRecord);
    header.restoredSha256 = readSha256(records_, kRestoredSha256Record);
    header.window = records_.number(kWindowRecord, kMaxDeltaWindow);
    records_.require(header.window >= kMinDeltaWindow, kWindowRecord, "it is less than 4096");
  }

  void readDictionary(DeltaHeader& header) {
    std::int64_t total = 0;
    for (std::int64_t left = count(kDictionaryCountRecord); left > 0; --left) {
      BaseFile file =
          baseFile(kDictionaryPathRecord, kDictionaryLengthRecord, kDictionarySha256Record);
      total += file.length;
      records_.require(total <= header.window, kDictionaryLengthRecord,
                       "the dictionary exceeds the window");
      if (records_.isRefused()) return;
      header.dictionary.push_back(std::move(file));
    }
  }

  void readCopies(DeltaHeader& header) {
    std::int64_t total = 0;
    for (std::int64_t left = count(kCopyCountRecord); left > 0; --left) {
      DeltaCopy copy;
      copy.streamLength = records_.number(kStreamLengthRecord);
      copy.file = baseFile(kCopyPathRecord, kCopyLengthRecord, kCopySha256Record);
      total += copy.streamLength + copy.file.length;
      records_.require(total <= header.restoredLength, kCopyLengthRecord,
                       "the copies exceed what is restored");
      if (records_.isRefused()) return;
      header.copies.push_back(std::move(copy));
    }
  }

  BaseFile baseFile(const char* pathRecord, const char* lengthRecord, const char* sha256Record) {
    BaseFile file;
    file.path = records_.text(pathRecord, kMaxBasePathBytes);
    records_.require(isBasePath(file.path), pathRecord, "it leads out of the folder");
    file.length = records_.number(lengthRecord);
    records_.require(file.length > 0, lengthRecord, "the file is empty");
    file.sha256 = readSha256(records_, sha256Record);
    return file;
  }

  std::int64_t count(const char* record) { return records_.number(record, kMaxBaseFiles); }

  StrictRecords records_;
};

}  // namespace

DeltaHeaderResult readDeltaHeaderBytes(std::string_view bytes) {
  return HeaderReader(bytes.substr(0, kMaxDeltaHeaderBytes)).read();
}

DeltaHeaderResult readDeltaHeader(const std::string& path) {
  // Where the header ends is known when it has been read; most are short.
  for (std::size_t look = kFirstLook;; look = std::min(look * 8, kMaxDeltaHeaderBytes)) {
    const std::optional<std::string> bytes = readPlainFile(path, look);
    if (!bytes) return {{}, 0, "it cannot be read"};
    DeltaHeaderResult result = readDeltaHeaderBytes(*bytes);
    if (result.header || bytes->size() < look || look == kMaxDeltaHeaderBytes) return result;
  }
}

}  // namespace quillory
