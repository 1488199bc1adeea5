#include "formats/archive_check.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "formats/archive_format.h"
#include "formats/patient_reader.h"
#include "formats/record_stream.h"
#include "formats/text_encodings.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

constexpr int kLoggedDigestLength = 32;

constexpr std::size_t kReadLength = 50'000;

using Digest = std::unique_ptr<unsigned char, HeapFreer>;

void logStars() { logMessage("%s\n", std::string(71, '*').c_str()); }

// The block's kSignatureHexRecord, with a log line for each record that is not what it was or
// should be.
std::string readBlockAgain(std::FILE* archive, long offset, const std::string& hexBefore) {
  std::fseek(archive, offset, SEEK_SET);  // A place that cannot be reached shows in the records.
  readInt(archive, "Signature Check File Type");
  const std::string name = readText(archive, "Signature Check ASB name");
  readInt(archive, "ASB Length");
  const long length = readLong(archive, kSignaturePlaceRecord);
  const std::string hex = readText(archive, kSignatureHexRecord, kCheckedHexCapacity);

  constexpr const char* kMismatch =
      "[ExtractArchive] Archive INVALID.  Archive signature did not match place in file (%s "
      "mismatch)\n";
  if (name != kSignatureBlockPath) logMessage(kMismatch, "asb name");
  if (length != offset) logMessage(kMismatch, "len");
  if (hex != hexBefore) logMessage(kMismatch, "sig");
  return hex;
}

std::vector<unsigned char> signatureOf(const std::string& hex) {
  std::vector<unsigned char> bytes = bytesOfHex(hex);
  logMessage("[ExtractArchive] Produced a signature of length %d\n",
             static_cast<int>(bytes.size()));
  return bytes;
}

void hashRegion(std::FILE* archive, long length, std::vector<char>& buffer, Hash_state* state) {
  PatientReader reader(archive, "the signed part of the archive");
  std::size_t remaining = length < 0 ? 0 : static_cast<std::size_t>(length);
  while (remaining > 0) {
    const std::size_t count = reader.read(buffer.data(), std::min(remaining, buffer.size()));
    updateHash(state, reinterpret_cast<const unsigned char*>(buffer.data()),
               static_cast<int>(count));
    remaining -= count;
  }
}

// Null when the library cannot make a digest. Goes on behind what has been hashed already, unless
// that is more than is signed.
Digest digestOfRegion(std::FILE* archive, long length, const HashedPart* begun,
                      std::vector<char>& buffer) {
  logMessage("[ExtractArchive] Starting hash...\n");
  Hash_state state;
  std::memset(&state, 0, sizeof(state));
  initHash(&state);  // Without the hash there is no digest, and so no signature that holds.
  long start = 0;
  if (begun != nullptr && begun->length <= length) {
    state = begun->state;
    start = begun->length;
  }
  logMessage("[ExtractArchive] Seeking to start of data...\n");
  std::fflush(archive);
  if (std::fseek(archive, start, SEEK_SET) == 0) {
    logMessage("[ExtractArhive] At start of file.\n");  // Spelled so in every log there is.
  } else {
    logMessage("[ExtractArchive] fseek() Error?!\n");
  }
  hashRegion(archive, length - start, buffer, &state);
  logMessage("[ExtractArchive] Completed hash\n");

  Digest digest(doFinal(&state));
  if (digest) {
    std::array<char, 2 * kLoggedDigestLength + 1> text;
    bytesToHex(text.data(), digest.get(), kLoggedDigestLength);
    logMessage("[ExtractArchive] Produced hash: %s\n", text.data());
  }
  return digest;
}

// The folder stays, empty: it is the caller's, who goes on as with any other, and the next start
// finds nothing in it that could run.
void reject(const std::string& destDir) {
  logStars();
  logMessage("[ExtractArchive] ERROR - unable to verify signature of hash of archive.\n");
  logMessage("[ExtractArchive] Quillory will disregard this update.\n");
  emptyFolder(destDir);
  logStars();
}

}  // namespace

void emptyFolder(const std::string& folder) {
  deleteFolder(folder.c_str());
  // deleteFolder() leaves two-character dot names alone; a rejected archive leaves nothing.
  for (const std::string& name : namesIn(folder)) removeTree(joinPath(folder, name));
}

SignatureCheck checkSignature(const std::string& archivePath, const std::string& destDir,
                              long signatureOffset, const std::string& signatureHex, Rsa_key* key,
                              const HashedPart* begun) {
  logMessage("[ExtractArchive] Pre-Alloc\n");
  std::vector<char> buffer(kReadLength);
  logMessage("[ExtractArchive] Post-Alloc\n");
  OwnedFile archive(std::fopen(archivePath.c_str(), "rb"));
  if (!archive) {
    logMessage("[ExtractArchive] Failed to extract archive - couldn't open file %s\n",
               archivePath.c_str());
    return SignatureCheck::kNoArchive;
  }
  const std::vector<unsigned char> signature =
      signatureOf(readBlockAgain(archive.get(), signatureOffset, signatureHex));
  const Digest digest = digestOfRegion(archive.get(), signatureOffset, begun, buffer);
  archive.reset();

  if (key == nullptr) logMessage("[ExtractArchive] There is no public key to verify with.\n");
  // A negative offset signs nothing, not even an empty archive.
  const bool holds =
      signatureOffset >= 0 && digest &&
      verifySignature(signature.data(), static_cast<int>(signature.size()), digest.get(), key);
  if (!holds) {
    reject(destDir);
    return SignatureCheck::kRejected;
  }
  logMessage("[ExtractArchive] Archive signature verified.\n");
  return SignatureCheck::kHolds;
}

}  // namespace quillory
