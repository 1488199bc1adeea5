// The files of an installed version that a delta needs, opened one after another. No link below the
// folder is followed: what lies behind one is nobody's old version.
#pragma once
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "formats/delta_header.h"

namespace quillory::update {

class BaseFiles {
 public:
  /// What an archive calls Contents/Home is, of an installed runtime, in a folder of its own,
  /// `home` (java/jre_bundle.h); so is what has no Contents at all. Both folders stay open until
  /// the end of the scope. One that is a link itself, or cannot be opened, has no files.
  explicit BaseFiles(const std::string& folder, const std::string& home = "");
  ~BaseFiles();
  BaseFiles(const BaseFiles&) = delete;
  BaseFiles& operator=(const BaseFiles&) = delete;

  /// Hands the content of a file to `take`, piece by piece, until that answers false. "" when it
  /// was all taken, or `take` wanted no more; else why the file is not the one that is meant: it is
  /// not there, is no plain file, cannot be read, or has another length.
  std::string read(const BaseFile& file, const std::function<bool(std::string_view)>& take) const;

  /// "" when the file has the length and the SHA-256; else what is different about it.
  std::string differenceOf(const BaseFile& file) const;

 private:
  int open(const std::string& archivePath) const;

  int folder_;
  int home_;
};

}  // namespace quillory::update
