// Reads record streams for people: as the launcher does, limits included, but noticing what is odd
// about a file and where.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

#include "formats/record_stream.h"
#include "packager/report/findings.h"
#include "support/owned.h"

namespace quillory::pack {

class RecordInput {
 public:
  /// Throws PackError when the file cannot be opened, or is no plain file, which may have no end.
  /// `findings` outlives the reader.
  RecordInput(const std::string& path, Findings& findings);

  /// The value as the launcher gets it. One that is too long is cut, as there, with a finding; one
  /// that is missing is "", with a finding once a file.
  std::string text(const std::string& name, int capacity = kDefaultCapacity);
  /// By the rules of the launcher, where "12abc" is 12; a finding when it is no plain number.
  std::int64_t number(const std::string& name);
  /// True for the number 1 alone.
  bool boolean(const std::string& name) { return number(name) == 1; }

  // Where it stands in the file, in bytes from its beginning.
  bool atEnd() const;
  std::int64_t position() const;
  void seek(std::int64_t position);
  std::int64_t size() const { return size_; }
  /// Up to `count` bytes from here.
  std::string bytes(std::size_t count);
  /// Goes behind the marker that the launcher finds in what follows; false, somewhere in the file,
  /// when it finds none. A warning tells of one that is there and that it does not see.
  bool findMarker(const std::string& marker);
  /// Whether the bytes of the marker are in what follows, seen by the launcher or not. Leaves the
  /// position just behind them, or at the end.
  bool holdsMarker(const std::string& marker);

 private:
  void note(Severity severity, const char* rule, const std::string& what);
  void noteUnseen(const std::string& marker, std::int64_t start);

  std::string path_;
  Findings& findings_;
  OwnedFile file_;
  std::int64_t size_ = 0;
  bool endReported_ = false;
};

/// For a file in which the launcher finds no marker: says why, where a finding of `findings` knows
/// it, else `what`.
PackError noMarker(const Findings& findings, const std::string& path, const std::string& what,
                   const std::string& advice = "");

}  // namespace quillory::pack
