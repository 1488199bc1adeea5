#include "packager/commands/extract.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

#include "formats/extraction.h"
#include "packager/bytes/work_folder.h"
#include "packager/commands/launcher_log.h"
#include "packager/commands/verify.h"
#include "packager/reading/file_kind.h"
#include "packager/reading/plain_archive.h"
#include "packager/report/exit_statuses.h"
#include "support/owned.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

void makeEmptyFolder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) {
    throw PackError("cannot be created: " + error.message(), "", {folder, 0});
  }
  if (!fs::is_empty(folder)) {
    throw PackError("is not empty", "name a new folder", {folder, 0});
  }
}

// What the launcher would wait for, refuse or do with another tool is refused before it begins.
void refuseUnextractable(const ArchiveListing& listing, const Findings& findings,
                         const std::string& archive) {
  if (hasErrors(findings)) {
    throw RejectedInput(findings);
  }
  for (const ListedEntry& entry : listing.entries) {
    if (entry.type == kPack200Type) {
      throw PackError("\"" + entry.path + "\" is packed with pack200, for which there is no tool",
                      "", {archive, 0});
    }
  }
}

void requireKey(const PlainArchive& plain, const std::string& archive, const PublicKey& key,
                Findings& findings) {
  const Verdict verdict = verifyArchiveFile(plain, archive, &key, findings);
  if (verdict.trust != Trust::kVerified) {
    throw PackError("the archive is not signed with this key: " + verdict.client, "", {archive, 0});
  }
}

struct ExtractOptions {
  std::string archive;
  std::string folder;
  std::string key;  ///< "": signatures are not checked
};

int runExtract(const ExtractOptions& options, Reporter& reporter) {
  extractTo(options.archive, options.folder, options.key, reporter.showsDetail());
  reporter.value("folder", options.folder);
  reporter.result(options.folder);
  return kDone;
}

}  // namespace

void extractTo(const std::string& archive, const std::string& folder, const std::string& keyFile,
               bool showLog) {
  const FileKind kind = fileKindOf(archive);
  if (kind != FileKind::kArchive && kind != FileKind::kCompressedArchive) {
    throw PackError("is no archive", "inspect shows what it is", {archive, 0});
  }
  const PlainArchive plain(wholeFile(archive), kind == FileKind::kCompressedArchive);
  extractPlain(plain, archive, folder, showLog, [&](Findings& findings) {
    if (!keyFile.empty()) {
      requireKey(plain, archive, PublicKey::load(keyFile), findings);
    }
  });
}

void extractPlain(const PlainArchive& plain, const std::string& archive, const std::string& folder,
                  bool showLog, const std::function<void(Findings&)>& check) {
  Findings findings;
  refuseUnextractable(plain.list(findings, archive), findings, archive);
  if (check) {
    check(findings);
  }
  makeEmptyFolder(folder);
  const LauncherLog log(showLog);
  // Entry by entry, as the launcher does it with a whole archive; but that would delete it, and
  // everything extracted from a signed one when there is no key.
  const OwnedFile stream(std::fopen(plain.path().c_str(), "rb"));
  if (!stream) {
    throwFileError(archive, "cannot be read again", errno);
  }
  std::optional<MetSignature> unused;
  ExtractionResult result;
  while (result.end == ExtractionEnd::kEntryDone) {
    stopIfInterrupted();
    result = extractEntry({}, folder, stream.get(), unused, ArchiveTrust{});
  }
  if (result.isFailure()) {
    throw PackError("cannot be extracted: Unable to extract archive file " + result.entry + " (" +
                        std::to_string(result.length) + "), " + result.reason,
                    "", {archive, 0});
  }
}

Command extractCommand() {
  const auto options = std::make_shared<ExtractOptions>();
  return {"extract",
          "extracts an archive as the launcher does",
          "quillory-pack extract --key mykey.pem App.p2.l2 /tmp/app",
          {{.name = "ARCHIVE",
            .description = "a .p2 or .p2.l2 file; it stays",
            .into = &options->archive,
            .isRequired = true},
           {.name = "FOLDER",
            .description = "a new or an empty folder",
            .into = &options->folder,
            .isRequired = true},
           {.name = "--key",
            .description = "check the signature first; without it, it is not",
            .into = &options->key}},
          [options](Reporter& reporter) { return runExtract(*options, reporter); }};
}

}  // namespace quillory::pack
