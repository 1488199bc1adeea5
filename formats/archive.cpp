#include "formats/archive.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "formats/archive_check.h"
#include "formats/archive_format.h"
#include "formats/extraction.h"
#include "formats/whole_archive.h"
#include "support/exit_status.h"
#include "support/owned.h"

namespace quillory {
namespace {

constexpr long kNoSignature = -1;
constexpr int kEntryDone = 0;

// kEntryDone, kEndOfArchive or, above these, the exit status with which the process has to end.
int statusOf(const ExtractionResult& result) {
  if (result.isFailure()) return exitStatusOf(result);
  return result.end == ExtractionEnd::kEndOfArchive ? kEndOfArchive : kEntryDone;
}

// A text as readString() hands it over.
char* allocText(const std::string& text, int capacity) {
  const auto size = static_cast<std::size_t>(capacity);
  OwnedText block(static_cast<char*>(std::calloc(size, 1)));
  if (block) std::memcpy(block.get(), text.data(), std::min(text.size(), size - 1));
  return block.release();
}

int extractOne(const ExtractionTools& tools, const char* destDir, std::FILE* stream,
               long* signatureOffset, char** signatureHex, Rsa_key* key) {
  if (*signatureOffset != kNoSignature) return kEndOfArchive;
  std::optional<MetSignature> signature;
  const int status = statusOf(extractEntry(tools, destDir, stream, signature, ArchiveTrust{key}));
  if (signature) {
    *signatureOffset = signature->offset;
    if (signatureHex != nullptr) *signatureHex = allocText(signature->hex, kSignatureHexCapacity);
  }
  return status;
}

// Here, where every file and every text is closed and freed.
int endOrReturn(int status) {
  if (status > 0) std::exit(status);
  return status;
}

}  // namespace

int extractArchiveFileCheckSignature(const char* lzmaTool, const char* unpack200Tool,
                                     const char* destDir, std::FILE* stream, long* signatureOffset,
                                     char** signatureHex, Rsa_key* key) {
  return endOrReturn(
      extractOne({lzmaTool, unpack200Tool}, destDir, stream, signatureOffset, signatureHex, key));
}

int extractArchiveFileIgnoreSignature(const char* lzmaTool, const char* unpack200Tool,
                                      const char* destDir, std::FILE* stream, Rsa_key* key) {
  long offset = kNoSignature;
  return extractArchiveFileCheckSignature(lzmaTool, unpack200Tool, destDir, stream, &offset,
                                          nullptr, key);
}

int extractArchive(const char* unpack200Tool, const char* archivePath, const char* destDir,
                   Rsa_key* key) {
  const int status = statusOf(extractAllOf(unpack200Tool, archivePath, destDir, ArchiveTrust{key}));
  return status == kEndOfArchive ? kEntryDone : endOrReturn(status);
}

bool verifyArchive(const char* archivePath, const char* destDir, long signatureOffset,
                   const char* signatureHex, Rsa_key* key, const HashedPart* begun) {
  const SignatureCheck check =
      checkSignature(archivePath, destDir, signatureOffset, signatureHex, key, begun);
  if (check == SignatureCheck::kNoArchive) std::exit(kExitFailure);
  return check == SignatureCheck::kHolds;
}

}  // namespace quillory
