// Writes the wrapper tail: the records that configure the launcher, with the embedded archives
// behind them. docs/formats/wrapper-tail.md has the bytes.
#pragma once
#include <string>
#include <vector>

#include "packager/byte_sinks.h"

namespace quillory::pack {

/// The records, in their order. All are texts in the file; an empty version means that the tail
/// does not carry that part.
struct TailRecords {
  std::string appName;
  std::string appVersion;
  std::string jreVersion;
  std::string updaterVersion;
  std::string minSplashMillis;
  std::string publicKeyHex;
  std::string canOverrideSplash;
  std::string installType;
  std::string silentParameter;
  std::string requiredJava;
  std::string updateUrl;
};

void writeTailRecords(ByteSink& sink, const TailRecords& records);

/// An entry of the tail. No source: an empty entry, which the launcher reads and skips.
struct TailEntry {
  std::string path;
  std::string source;
};

void writeTailEntry(ByteSink& sink, const TailEntry& entry);

/// The 128 bytes before a tail that stands inside an executable.
std::string tailMarker();

/// What has to stand between an executable and the marker: a byte where the end of the executable
/// looks like a beginning of the marker, which the launcher's search would not see then; else "".
std::string guardBeforeMarker(const std::string& executable);

}  // namespace quillory::pack
