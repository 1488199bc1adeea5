// Installing what the tail carries. Each component is extracted into a temporary folder of the
// master folder, which is then renamed to its version folder. The entries of the tail, in order:
//
//   lzma64, nativesplash.png        the tool that decompresses the others, and the splash picture
//   three of the updater            its archive and its files, in any order; any may be empty
//   one JRE                         where "JRE Version" is not empty; see java/jre_provisioning.h
//   two of the application          where "App Version" is not empty; one may be empty
//
// An archive with a bad signature counts as extracted: it leaves an empty version folder, and the
// newest folder is what runs. Any other failure ends the installation where it is.
#pragma once
#include <cstdio>
#include <optional>
#include <string>

#include "formats/archive_signature.h"
#include "formats/extraction.h"
#include "formats/tail_format.h"

namespace quillory {

/// The open tail, and what its archives must prove.
struct TailArchives {
  std::FILE* stream;
  Rsa_key* key;  ///< may be null
  bool isHardened = false;
  std::optional<ArchiveIdentity> expected = {};  ///< of a hardened bundle
};

struct ComponentFolders {
  std::string gu, guTemp;
  std::string app, appTemp;
};

/// Works out all four, and logs the updater's. The two temporary names may be the same: they are
/// used one after the other.
ComponentFolders nameComponentFolders(const std::string& masterFolder, const std::string& guVersion,
                                      const std::string& appName, const std::string& appVersion);

/// The programs that entries are unpacked with; "" where there is none yet.
struct UnpackingTools {
  std::string lzma;
  std::string unpack200;
};

/// Extracts the tail's next entry into `destination`.
ExtractionResult extractTailEntry(const TailArchives& tail, const UnpackingTools& tools,
                                  const std::string& destination);

/// What may replace the shipped splash picture (see splash_override.h).
struct SplashOverride {
  std::string canOverride;
  std::optional<std::string> image;
};

/// Extracts the first five entries and moves them to the updater's folder. The temporary folder
/// exists already. Nothing is moved after a failure, which is the result.
ExtractionResult extractUpdater(const TailArchives& tail, const ComponentFolders& folders,
                                const SplashOverride& splashOverride);

/// Files of the installed updater that the rest of the installation uses.
struct UpdaterFiles {
  std::string lzmaTool;
  std::string caCerts;  ///< trust store for the JRE; need not exist
  std::string splashPicture;
};
/// Where they are in the updater's folder, which is logged; none of them need be there.
UpdaterFiles locateUpdaterFiles(const std::string& guFolder);

/// Extracts two entries and moves them to the application's folder. Nothing is moved after a
/// failure, which is the result: of an entry, or, with a log line, of its temporary folder, which
/// cannot be made (kFileNotCreated).
ExtractionResult extractApplication(const TailArchives& tail, const ComponentFolders& folders,
                                    const UnpackingTools& tools);

}  // namespace quillory
