#include "formats/archive.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "formats/archive_output.h"
#include "formats/archive_signature.h"
#include "formats/archive_tools.h"
#include "formats/hash_ahead.h"
#include "formats/patient_reader.h"
#include "formats/record_stream.h"
#include "support/exit_status.h"
#include "support/files.h"
#include "support/log.h"
#include "support/new_file.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {

int up200modified = 0;

namespace {

constexpr long kNoSignature = -1;
constexpr int kEntryDone = 0;

constexpr long kFolder = 1;
constexpr long kPack200 = 2;

constexpr std::string_view kSignatureName = kSignatureBlockPath.substr(kSpecialBlockPrefix.size());
constexpr std::string_view kLzmaSuffix = ".l2";
constexpr std::string_view kArchiveSuffix = ".p2";
constexpr std::size_t kShortestWithSuffix = 4;

// Shared by all extractions, which therefore cannot run side by side. A nested archive is opened
// only after the file that holds it has been written.
std::array<char, 1'000'000> copyBuffer;

struct Tools {
  const char* lzma;
  const char* unpack200;
};

struct Entry {
  long type;
  std::string path;
  long length;
};

// Functions that return an int return kEntryDone, kEndOfArchive or the exit status with which the
// process has to end. The public functions end it, when every stream of theirs has been closed.
int endOrReturn(int result) {
  if (result > 0) std::exit(result);
  return result;
}

int extractWholeArchive(const char* unpack200Tool, const char* archivePath, const char* destDir,
                        Rsa_key* key);

int refuse(const Entry& entry, const char* reason) {
  logError("[ExtractArchiveFile] Refusing archive file %s (%ld): %s\n", entry.path.c_str(),
           entry.length, reason);
  return kExitFailure;
}

int failToWrite(const Entry& entry, const std::string& output, int error) {
  logError("[ExtractArchiveFile] Unable to extract archive file %s (%ld), unable to write %s: %s\n",
           entry.path.c_str(), entry.length, output.c_str(), std::strerror(error));
  return kExitFailure;
}

// Whether the entry is the signature block, whose last two records are then in the two places.
bool readSignatureBlock(const std::string& path, std::FILE* stream, long* offset, char** hex) {
  if (!path.starts_with(kSpecialBlockPrefix)) return false;
  logMessage("[ExtractArchiveFile] Found special block %s\n", path.c_str());
  const std::string name = path.substr(kSpecialBlockPrefix.size());
  if (name != kSignatureName) return false;

  logMessage("[ExtractArchiveFile] Found signature block %s\n", name.c_str());
  *offset = readLong(stream, "Signature Length");
  OwnedText text(readString(stream, "Signature Hex", kSignatureHexCapacity));
  if (hex != nullptr) *hex = text.release();
  return true;
}

// Whether all of it could be written; `output` has the errno if not.
bool copyContent(std::FILE* stream, const Entry& entry, NewFile& output) {
  PatientReader reader(stream, entry.path);
  std::size_t remaining = static_cast<std::size_t>(entry.length);
  while (remaining > 0) {
    const std::size_t count =
        reader.read(copyBuffer.data(), std::min(remaining, copyBuffer.size()));
    if (!output.write(copyBuffer.data(), count)) return false;
    remaining -= count;
  }
  return output.close();
}

int writeContent(std::FILE* stream, const Entry& entry, const std::string& output) {
  NewFile file(output);
  logMessage("\t[ExtractArchiveFile] Extracting to %s\n", output.c_str());
  if (!file.isOpen()) {
    logMessage(
        "\t[ExtractArchiveFile] *************************** Unable to extract archive file %s "
        "(%ld), unable to open file for writing\n",
        entry.path.c_str(), entry.length);
    return kExitFailure;
  }
  if (!copyContent(stream, entry, file)) return failToWrite(entry, output, file.error());
  chmodR755(output.c_str());
  return kEntryDone;
}

// What the suffixes of a written file ask for.
int followSuffixes(const Tools& tools, std::string path, const char* destDir, Rsa_key* key) {
  if (path.size() < kShortestWithSuffix) {
    logMessage("\t[ExtractArchiveFile] Path to file too short to check for LZMA\n");
  } else if (path.ends_with(kLzmaSuffix)) {
    path = decompressLzma(tools.lzma, path);
  }
  if (path.size() < kShortestWithSuffix || !path.ends_with(kArchiveSuffix)) return kEntryDone;

  logMessage("\t[ExtractArchiveFile] Starting un-p2Archiving\n");
  const int result = extractWholeArchive(tools.unpack200, path.c_str(), destDir, key);
  if (result == kEntryDone) logMessage("\t[ExtractArchiveFile] Finished un-archiving\n");
  return result;
}

int extractFile(const Tools& tools, const char* destDir, std::FILE* stream, const Entry& entry,
                Rsa_key* key) {
  if (entry.length < 0) return refuse(entry, "its length is negative");
  const std::string path = pathBelow(destDir, entry.path);
  const bool isPacked = entry.type == kPack200;
  const std::string output = isPacked ? path + std::string(kArchiveSuffix) : path;

  const int result = writeContent(stream, entry, output);
  if (result != kEntryDone) return result;
  if (isPacked) {
    up200modified = 1;
    if (!unpackPack200(tools.unpack200, output, path)) return kExitUnpack200Failed;
  }
  return tools.lzma == nullptr ? kEntryDone : followSuffixes(tools, path, destDir, key);
}

bool isSameFile(const struct stat& file, const std::string& path) {
  struct stat found;
  return lstat(path.c_str(), &found) == 0 && found.st_dev == file.st_dev &&
         found.st_ino == file.st_ino;
}

// Whether the entry, or a folder above it, would take the place of the file that it is read from:
// another one would be verified than the one that is being extracted.
bool replacesItsSource(const char* destDir, const Entry& entry, std::FILE* stream) {
  struct stat source;
  const int descriptor = fileno(stream);
  if (descriptor < 0 || fstat(descriptor, &source) != 0) return false;
  const std::string path = pathBelow(destDir, entry.path);
  if (isSameFile(source, path + std::string(kArchiveSuffix))) return true;
  const std::size_t folder = path.size() - entry.path.size();
  for (std::size_t slash = path.find('/', folder); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    if (isSameFile(source, path.substr(0, slash))) return true;
  }
  return isSameFile(source, path);
}

int extractEntry(const Tools& tools, const char* destDir, std::FILE* stream, long* signatureOffset,
                 char** signatureHex, Rsa_key* key) {
  if (*signatureOffset != kNoSignature) return kEndOfArchive;
  const std::string type = readText(stream, "Archive File Type");
  if (type.empty()) return kEndOfArchive;

  Entry entry{std::atol(type.c_str()), readText(stream, "Archive File Path"), 0};
  toNativePath(entry.path.data());
  logMessage("[ExtractArchiveFile] Extracting %s (::%ld)\n", entry.path.c_str(), entry.type);
  const std::size_t suffixLength = entry.type == kPack200 ? kArchiveSuffix.size() : 0;
  if (const char* reason = whyRefused(destDir, entry.path, suffixLength))
    return refuse(entry, reason);
  if (replacesItsSource(destDir, entry, stream))
    return refuse(entry, "it would take the place of its archive");

  createParents(destDir, entry.path);
  if (entry.type == kFolder) {
    const std::string folder = pathBelow(destDir, entry.path);
    createFolder(folder);
    logMessage("\t[ExtractArchiveFile] Created folder %s\n", folder.c_str());
    return kEntryDone;
  }
  entry.length = readLong(stream, "Archive File Length");
  if (entry.length == 0) {
    logMessage("[ExtractArchiveFile] Skipping empty file\n");  // Not reproduced, by intent.
    return kEntryDone;
  }
  if (readSignatureBlock(entry.path, stream, signatureOffset, signatureHex)) return kEndOfArchive;
  return extractFile(tools, destDir, stream, entry, key);
}

struct MetSignature {
  long offset = kNoSignature;
  OwnedText hex;
};

// Entry after entry; kEntryDone at the end of the archive.
int extractEntries(const char* unpack200Tool, const char* archivePath, const char* destDir,
                   MetSignature& signature, HashAhead& digest, Rsa_key* key) {
  const OwnedFile archive(std::fopen(archivePath, "rb"));
  if (!archive) {
    logMessage("[ExtractArchive] Failed to extract archive - couldn't open file %s\n", archivePath);
    return kExitFailure;
  }
  // Without the LZMA tool: inside an archive the suffixes mean nothing.
  const Tools tools{nullptr, unpack200Tool};
  char* hex = nullptr;
  int result = kEntryDone;
  while (result == kEntryDone) {
    digest.allow(std::ftell(archive.get()));  // The signature block is none of what it signs.
    result = extractEntry(tools, destDir, archive.get(), &signature.offset, &hex, key);
  }
  signature.hex.reset(hex);
  if (result != kEndOfArchive) return result;
  logMessage("[ExtractArchive] Done extracting archive.\n");
  return kEntryDone;
}

int extractWholeArchive(const char* unpack200Tool, const char* archivePath, const char* destDir,
                        Rsa_key* key) {
  logMessage("[ExtractArchive] Extracting archive %s into %s\n", archivePath, destDir);
  MetSignature signature;
  HashAhead digest(archivePath);
  const int result = extractEntries(unpack200Tool, archivePath, destDir, signature, digest, key);
  if (result != kEntryDone) return result;

  // Asked of the text: an offset of -1 in a signature block must not make the archive an unsigned
  // one.
  if (signature.hex)
    verifyArchive(archivePath, destDir, signature.offset, signature.hex.get(), key,
                  &digest.finish());
  std::remove(archivePath);
  return kEntryDone;
}

}  // namespace

int extractArchiveFileCheckSignature(const char* lzmaTool, const char* unpack200Tool,
                                     const char* destDir, std::FILE* stream, long* signatureOffset,
                                     char** signatureHex, Rsa_key* key) {
  return endOrReturn(
      extractEntry({lzmaTool, unpack200Tool}, destDir, stream, signatureOffset, signatureHex, key));
}

int extractArchiveFileIgnoreSignature(const char* lzmaTool, const char* unpack200Tool,
                                      const char* destDir, std::FILE* stream, Rsa_key* key) {
  long offset = kNoSignature;
  return extractArchiveFileCheckSignature(lzmaTool, unpack200Tool, destDir, stream, &offset,
                                          nullptr, key);
}

int extractArchive(const char* unpack200Tool, const char* archivePath, const char* destDir,
                   Rsa_key* key) {
  return endOrReturn(extractWholeArchive(unpack200Tool, archivePath, destDir, key));
}

}  // namespace quillory
