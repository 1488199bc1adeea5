#include "formats/extraction.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "formats/archive_format.h"
#include "formats/archive_output.h"
#include "formats/archive_tools.h"
#include "formats/patient_reader.h"
#include "formats/record_stream.h"
#include "formats/whole_archive.h"
#include "support/exit_status.h"
#include "support/files.h"
#include "support/log.h"
#include "support/new_file.h"
#include "support/paths.h"

namespace quillory {

int up200modified = 0;

namespace {

using End = ExtractionEnd;

constexpr std::string_view kSignatureName = kSignatureBlockPath.substr(kSpecialBlockPrefix.size());
constexpr std::size_t kShortestWithSuffix = 4;

// Shared by all extractions, which therefore cannot run side by side. A nested archive is opened
// only after the file that holds it has been written.
std::array<char, 1'000'000> copyBuffer;

struct Entry {
  long type;
  std::string path;
  long length;
};

ExtractionResult endOfArchive() { return {.end = End::kEndOfArchive}; }

ExtractionResult failure(End end, const Entry& entry, const std::string& path,
                         const std::string& reason) {
  return {.end = end, .entry = entry.path, .length = entry.length, .path = path, .reason = reason};
}

ExtractionResult refuse(const Entry& entry, const char* reason) {
  logError("[ExtractArchiveFile] Refusing archive file %s (%ld): %s\n", entry.path.c_str(),
           entry.length, reason);
  return failure(End::kEntryRefused, entry, "", reason);
}

ExtractionResult failToCreate(const Entry& entry, const std::string& output) {
  logMessage(
      "\t[ExtractArchiveFile] *************************** Unable to extract archive file %s "
      "(%ld), unable to open file for writing\n",
      entry.path.c_str(), entry.length);
  return failure(End::kFileNotCreated, entry, output, "unable to open file for writing");
}

// A failure: half of a file under its name would be run as a whole one.
ExtractionResult failToWrite(const Entry& entry, const std::string& output, int error) {
  logError("[ExtractArchiveFile] Unable to extract archive file %s (%ld), unable to write %s: %s\n",
           entry.path.c_str(), entry.length, output.c_str(), std::strerror(error));
  return failure(End::kFileNotWritten, entry, output,
                 "unable to write " + output + ": " + std::strerror(error));
}

// What an error cuts short reads like the end of the archive, and half of an installation would be
// taken for all of it.
ExtractionResult failToRead(const Entry& entry) {
  logError("[ExtractArchiveFile] Unable to read the archive on, behind %s\n", entry.path.c_str());
  return failure(End::kNotRead, entry, "", "the archive cannot be read");
}

// Whether the entry is the signature block, whose last two records are then in `signature`.
bool readSignatureBlock(const std::string& path, std::FILE* stream,
                        std::optional<MetSignature>& signature) {
  if (!path.starts_with(kSpecialBlockPrefix)) return false;
  logMessage("[ExtractArchiveFile] Found special block %s\n", path.c_str());
  const std::string name = path.substr(kSpecialBlockPrefix.size());
  if (name != kSignatureName) return false;

  logMessage("[ExtractArchiveFile] Found signature block %s\n", name.c_str());
  // Met, whatever its offset is: -1 must not stand for "none", or an archive that says so would be
  // taken for one without a signature.
  signature.emplace();
  signature->offset = readLong(stream, kSignaturePlaceRecord);
  signature->hex = readText(stream, kSignatureHexRecord, kSignatureHexCapacity);
  return true;
}

// Whether all of it could be handed over; `output` has the errno if not.
bool copyContent(std::FILE* stream, const Entry& entry, NewFile& output) {
  PatientReader reader(stream, entry.path);
  std::size_t remaining = static_cast<std::size_t>(entry.length);
  while (remaining > 0) {
    const std::size_t count =
        reader.read(copyBuffer.data(), std::min(remaining, copyBuffer.size()));
    if (!output.write(copyBuffer.data(), count)) return false;
    remaining -= count;
  }
  return true;
}

ExtractionResult writeContent(std::FILE* stream, const Entry& entry, const std::string& output) {
  NewFile file(output);
  logMessage("\t[ExtractArchiveFile] Extracting to %s\n", output.c_str());
  if (!file.isOpen()) return failToCreate(entry, output);
  const bool isCopied = copyContent(stream, entry, file);
  // By the descriptor: neither a look at the path nor another open file is needed for it.
  if (isCopied) chmodR755(file);
  if (!isCopied || !file.close()) return failToWrite(entry, output, file.error());
  return {};
}

// What the suffixes of a written file ask for.
ExtractionResult followSuffixes(const ExtractionTools& tools, std::string path,
                                const std::string& destDir, const ArchiveTrust& trust) {
  BegunDigest digest;
  if (path.size() < kShortestWithSuffix) {
    logMessage("\t[ExtractArchiveFile] Path to file too short to check for LZMA\n");
  } else if (compressionOf(path) != nullptr) {
    Decompressed plain = decompressLzma(tools.lzma, path);
    path = std::move(plain.path);
    digest = std::move(plain.digest);
  }
  if (path.size() < kShortestWithSuffix || !path.ends_with(kArchiveSuffix)) return {};

  logMessage("\t[ExtractArchiveFile] Starting un-p2Archiving\n");
  ExtractionResult result = extractAllOf(tools.unpack200, path, destDir, trust, digest);
  if (result.isFailure()) return result;
  logMessage("\t[ExtractArchiveFile] Finished un-archiving\n");
  result.end = End::kEntryDone;
  return result;
}

ExtractionResult extractFile(const ExtractionTools& tools, const std::string& destDir,
                             std::FILE* stream, const Entry& entry, const ArchiveTrust& trust) {
  // What counts up to it would never end, or take it for an enormous one.
  if (entry.length < 0) return refuse(entry, "its length is negative");
  const std::string path = pathBelow(destDir.c_str(), entry.path);
  const bool isPacked = entry.type == kPack200Entry;
  const std::string output = isPacked ? path + std::string(kArchiveSuffix) : path;

  ExtractionResult result = writeContent(stream, entry, output);
  if (result.isFailure()) return result;
  if (isPacked) {
    up200modified = 1;
    if (!unpackPack200(tools.unpack200, output, path))
      return failure(End::kNotUnpacked, entry, path, "unpack200 left nothing");
  }
  if (tools.lzma == nullptr) return {};
  return followSuffixes(tools, path, destDir, trust);
}

bool isSameFile(const struct stat& file, const std::string& path) {
  struct stat found;
  return lstat(path.c_str(), &found) == 0 && found.st_dev == file.st_dev &&
         found.st_ino == file.st_ino;
}

// Whether the entry, or a folder above it, would take the place of the file that it is read from:
// another one would be verified than the one that is being extracted.
bool replacesItsSource(const std::string& destDir, const Entry& entry, std::FILE* stream) {
  struct stat source;
  const int descriptor = fileno(stream);
  if (descriptor < 0 || fstat(descriptor, &source) != 0) return false;
  const std::string path = pathBelow(destDir.c_str(), entry.path);
  if (isSameFile(source, path + std::string(kArchiveSuffix))) return true;
  const std::size_t folder = path.size() - entry.path.size();
  for (std::size_t slash = path.find('/', folder); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    if (isSameFile(source, path.substr(0, slash))) return true;
  }
  return isSameFile(source, path);
}

}  // namespace

int exitStatusOf(const ExtractionResult& failure) {
  return failure.end == End::kNotUnpacked ? kExitUnpack200Failed : kExitFailure;
}

ExtractionResult extractEntry(const ExtractionTools& tools, const std::string& destDir,
                              std::FILE* stream, std::optional<MetSignature>& signature,
                              const ArchiveTrust& trust) {
  if (signature) return endOfArchive();
  const std::string type = readText(stream, kEntryTypeRecord);
  if (type.empty() && std::ferror(stream) == 0) return endOfArchive();

  Entry entry{std::atol(type.c_str()), readText(stream, kEntryPathRecord), 0};
  if (std::ferror(stream) != 0) return failToRead(entry);
  toNativePath(entry.path.data());
  logMessage("[ExtractArchiveFile] Extracting %s (::%ld)\n", entry.path.c_str(), entry.type);
  const std::size_t suffixLength = entry.type == kPack200Entry ? kArchiveSuffix.size() : 0;
  if (const char* reason = whyRefused(destDir, entry.path, suffixLength))
    return refuse(entry, reason);
  if (replacesItsSource(destDir, entry, stream))
    return refuse(entry, "it would take the place of its archive");

  createParents(destDir.c_str(), entry.path);
  if (entry.type == kFolderEntry) {
    const std::string folder = pathBelow(destDir.c_str(), entry.path);
    createFolder(folder);
    logMessage("\t[ExtractArchiveFile] Created folder %s\n", folder.c_str());
    return {};
  }
  entry.length = readLong(stream, kEntryLengthRecord);
  if (std::ferror(stream) != 0) return failToRead(entry);
  if (entry.length == 0) {
    logMessage("[ExtractArchiveFile] Skipping empty file\n");  // Not reproduced, by intent.
    return {};
  }
  if (readSignatureBlock(entry.path, stream, signature))
    return std::ferror(stream) != 0 ? failToRead(entry) : endOfArchive();
  return extractFile(tools, destDir, stream, entry, trust);
}

}  // namespace quillory
