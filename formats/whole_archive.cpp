#include "formats/whole_archive.h"

#include <cstdio>

#include "formats/archive_check.h"
#include "formats/hash_ahead.h"
#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"

namespace quillory {
namespace {

using End = ExtractionEnd;

ExtractionResult noArchive(const std::string& path) {
  return {.end = End::kNoArchive, .path = path, .reason = "the archive cannot be opened"};
}

// Entry after entry, up to the end of the archive or a failure.
ExtractionResult extractEntries(const ExtractionTools& tools, const std::string& archivePath,
                                const std::string& destDir, HashAhead& digest,
                                std::optional<MetSignature>& signature) {
  const OwnedFile archive(std::fopen(archivePath.c_str(), "rb"));
  if (!archive) {
    logMessage("[ExtractArchive] Failed to extract archive - couldn't open file %s\n",
               archivePath.c_str());
    return noArchive(archivePath);
  }
  ExtractionResult result;
  while (result.end == End::kEntryDone) {
    digest.allow(std::ftell(archive.get()));  // The signature block is none of what it signs.
    // Without the LZMA tool no entry is an archive that would be trusted or not.
    result = extractEntry(tools, destDir, archive.get(), signature, ArchiveTrust{});
  }
  if (!result.isFailure()) logMessage("[ExtractArchive] Done extracting archive.\n");
  return result;
}

// A whole archive: what extractAllOf() is told of it.
struct ArchiveExtraction {
  ExtractionTools tools;
  const std::string& archivePath;
  const std::string& destDir;
  const ArchiveTrust& trust;
  const BegunDigest& begun;
};

ExtractionResult judged(ExtractionResult result, SignatureCheck check,
                        const std::string& archivePath) {
  if (check == SignatureCheck::kNoArchive) return noArchive(archivePath);
  result.verdict =
      check == SignatureCheck::kHolds ? ArchiveVerdict::kVerified : ArchiveVerdict::kRejected;
  if (check == SignatureCheck::kRejected) result.reason = "its signature does not hold";
  return result;
}

ExtractionResult extract(const ArchiveExtraction& its) {
  std::optional<MetSignature> signature;
  HashAhead digest(its.archivePath.c_str(), its.begun);
  ExtractionResult result =
      extractEntries(its.tools, its.archivePath, its.destDir, digest, signature);
  if (result.isFailure()) return result;
  result.verdict = ArchiveVerdict::kUnsigned;
  if (!signature) return result;
  return judged(result,
                checkSignature(its.archivePath, its.destDir, signature->offset, signature->hex,
                               its.trust.key, &digest.finish()),
                its.archivePath);
}

ExtractionResult rejected(const ArchiveExtraction& its, const std::string& reason) {
  logError("[ExtractArchive] Refusing archive %s: %s\n", its.archivePath.c_str(), reason.c_str());
  emptyFolder(its.destDir);
  return {.end = End::kArchiveRejected,
          .path = its.archivePath,
          .reason = reason,
          .verdict = ArchiveVerdict::kRejected};
}

// Nothing of the archive is written before it is known to be complete, signed as a whole and the
// expected one. Its signature is checked beside the extraction, whose files nobody uses before its
// end; but before it where unpack200 runs, which the archive itself may have brought.
ExtractionResult extractProven(const ArchiveExtraction& its) {
  const std::optional<ArchiveInspection> found = inspectArchive(its.archivePath, its.trust);
  if (!found) return noArchive(its.archivePath);
  if (!found->refusal.empty()) return rejected(its, found->refusal);
  logMessage("[ExtractArchive] The archive is %s\n", asText(*found->identity).c_str());

  HashAhead digest(its.archivePath.c_str(), its.begun);
  digest.allow(found->signature.offset);
  const auto check = [&] {
    return checkSignature(its.archivePath, its.destDir, found->signature.offset,
                          found->signature.hex, its.trust.key, &digest.finish());
  };
  if (found->needsUnpack200 && check() != SignatureCheck::kHolds)
    return rejected(its, "its signature does not hold");

  std::optional<MetSignature> signature;
  ExtractionResult result =
      extractEntries(its.tools, its.archivePath, its.destDir, digest, signature);
  if (result.isFailure()) return result;
  if (signature != found->signature) return rejected(its, "it changed while it was extracted");
  if (!found->needsUnpack200 && check() != SignatureCheck::kHolds)
    return rejected(its, "its signature does not hold");
  result.verdict = ArchiveVerdict::kVerified;
  return result;
}

}  // namespace

ExtractionResult extractAllOf(const char* unpack200Tool, const std::string& archivePath,
                              const std::string& destDir, const ArchiveTrust& trust,
                              const BegunDigest& begun) {
  logMessage("[ExtractArchive] Extracting archive %s into %s\n", archivePath.c_str(),
             destDir.c_str());
  // Without the LZMA tool: inside an archive the suffixes mean nothing.
  const ArchiveExtraction extraction{
      {.lzma = nullptr, .unpack200 = unpack200Tool}, archivePath, destDir, trust, begun};
  ExtractionResult result = trust.isHardened ? extractProven(extraction) : extract(extraction);
  if (!result.isFailure() || result.end == End::kArchiveRejected) removeFileOrLink(archivePath);
  return result;
}

}  // namespace quillory
