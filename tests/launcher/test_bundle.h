// An application bundle written by hand, around a stand-in for the launcher's executable.
#pragma once
#include <sys/stat.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "launcher/bundle_paths.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

using Pairs = std::vector<std::pair<std::string, std::string>>;

/// The records behind the marker of a parameters file.
std::string paramRecords(const Pairs& pairs);
/// A whole parameters file, with some text before its marker.
std::string paramsFile(const Pairs& pairs);

std::string paramsMarker();
std::string tailMarker();

/// What the tail's records say; see launcher/wrapper_tail.h.
struct TailText {
  std::string appName = "Demo";
  std::string appVersion = "";
  std::string jreVersion = "";
  std::string guVersion = "";
  std::string minSplashMs = "1500";
  std::string publicKey = "";
  std::string canOverrideSplash = "0";
  std::string installType = "perm_user";
  std::string silentParameter = "-quiet";
  std::string requiredJavaVersion = "";
  std::string updateUrl = "";

  std::string bytes() const;
};

/// Entries of an archive, as the tail holds them too.
std::string fileEntry(std::string_view path, std::string_view content);
std::string emptyEntry(std::string_view path);
/// An unsigned archive of such entries.
std::string archiveOf(std::string_view entries);

class TestBundle {
 public:
  explicit TestBundle(std::string_view executable = "#!/bin/sh\n");

  std::string exePath() const { return folder_ / "App.app/Contents/MacOS/launcher"; }
  Executable executable() const;
  std::string resource(const std::string& name) const;
  void writeResource(const std::string& name, std::string_view content) const;
  /// A resource or the executable that can be run.
  void writeScript(const std::string& path, std::string_view script) const;

 private:
  TempDir folder_;
};

}  // namespace quillory::testing
