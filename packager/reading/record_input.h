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
  /// Throws PackError when the file cannot be opened. `findings` outlives the reader.
  RecordInput(const std::string& path, Findings& findings);

  /// The value as the launcher gets it. One that is too long is cut, as there, with a finding; one
  /// that is missing is "", with a finding once a file.
  std::string text(const std::string& name, int capacity = kDefaultCapacity);
  /// By the rules of the launcher, where "12abc" is 12; a finding when it is no plain number.
  std::int64_t number(const std::string& name);
  bool boolean(const std::string& name) { return number(name) == 1; }

  bool atEnd();
  std::int64_t position() const;
  void seek(std::int64_t position);
  std::int64_t size() const { return size_; }
  /// Up to `count` bytes from here.
  std::string bytes(std::size_t count);
  /// Goes behind the marker; false when it is not there.
  bool findMarker(const std::string& marker);

 private:
  void note(Severity severity, const char* rule, const std::string& what);

  std::string path_;
  Findings& findings_;
  OwnedFile file_;
  std::int64_t size_ = 0;
  bool endReported_ = false;
};

}  // namespace quillory::pack
