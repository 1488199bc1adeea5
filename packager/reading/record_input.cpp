#include "packager/reading/record_input.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "formats/marker_search.h"

namespace quillory::pack {
namespace {

constexpr std::size_t kSearchBlock = 64 * 1024;

bool isPlainNumber(const std::string& text) {
  const std::size_t start = text.starts_with('-') ? 1 : 0;
  return text.size() > start && text.find_first_not_of("0123456789", start) == std::string::npos;
}

}  // namespace

RecordInput::RecordInput(const std::string& path, Findings& findings)
    : path_(path), findings_(findings), file_(std::fopen(path.c_str(), "rb")) {
  if (!file_) {
    throwFileError(path, "cannot be opened", errno);
  }
  struct stat info;
  if (fstat(fileno(file_.get()), &info) == 0 && !S_ISREG(info.st_mode)) {
    throw PackError("is a folder, a device or a pipe, and no file", "name a file", {path, 0});
  }
  if (fseeko(file_.get(), 0, SEEK_END) != 0) {
    throwFileError(path, "cannot be read", errno);
  }
  size_ = ftello(file_.get());
  seek(0);
}

void RecordInput::note(Severity severity, const char* rule, const std::string& what) {
  findings_.push_back({severity, rule, what, {path_, 0}, ""});
}

std::string RecordInput::text(const std::string& name, int capacity) {
  const std::int64_t start = position();
  const std::size_t room = static_cast<std::size_t>(capacity) - 1;
  std::string value;
  for (int byte; value.size() < room;) {
    byte = std::fgetc(file_.get());
    if (byte == '\0') {
      return value;
    }
    if (byte == EOF) {
      if (!endReported_) {
        note(Severity::kError, "cut-short", "the file ends in the record \"" + name + "\"");
        endReported_ = true;
      }
      return value;
    }
    value += static_cast<char>(byte);
  }
  note(Severity::kError, "record-limit",
       "the record \"" + name + "\" at " + std::to_string(start) + " has more than the " +
           std::to_string(longestValue(capacity)) +
           " bytes that the launcher reads; it takes the rest for the next record");
  return value;
}

std::int64_t RecordInput::number(const std::string& name) {
  const std::int64_t start = position();
  const std::string value = text(name, kNumberCapacity);
  if (!isPlainNumber(value) && !endReported_) {
    note(Severity::kWarning, "number",
         "the record \"" + name + "\" at " + std::to_string(start) + " is no number: \"" + value +
             "\"");
  }
  return std::strtol(value.c_str(), nullptr, 10);
}

bool RecordInput::atEnd() const { return position() >= size_; }

std::int64_t RecordInput::position() const { return ftello(file_.get()); }

void RecordInput::seek(std::int64_t position) { fseeko(file_.get(), position, SEEK_SET); }

std::string RecordInput::bytes(std::size_t count) {
  std::string content(count, '\0');
  content.resize(std::fread(content.data(), 1, count, file_.get()));
  return content;
}

bool RecordInput::findMarker(const std::string& marker) {
  const std::int64_t start = position();
  std::int64_t at = start;
  MarkerSearch search(marker);
  while (!search.isFound()) {
    const std::string block = bytes(kSearchBlock);
    if (block.empty()) {
      noteUnseen(marker, start);
      return false;
    }
    at += static_cast<std::int64_t>(search.take(block));
  }
  seek(at);
  return true;
}

bool RecordInput::holdsMarker(const std::string& marker) {
  std::string window;
  for (std::int64_t at = position();;) {
    const std::string block = bytes(kSearchBlock);
    window += block;
    const std::size_t found = window.find(marker);
    if (found != std::string::npos) {
      seek(at + static_cast<std::int64_t>(found + marker.size()));
      return true;
    }
    if (block.empty()) {
      return false;
    }
    const std::size_t kept = std::min(window.size(), marker.size() - 1);
    at += static_cast<std::int64_t>(window.size() - kept);
    window.erase(0, window.size() - kept);
  }
}

void RecordInput::noteUnseen(const std::string& marker, std::int64_t start) {
  seek(start);
  if (!holdsMarker(marker)) {
    return;
  }
  const std::int64_t at = position() - static_cast<std::int64_t>(marker.size());
  findings_.push_back({Severity::kWarning,
                       "marker-unseen",
                       "the marker at byte " + std::to_string(at) +
                           " stands right behind bytes that begin like it: the launcher's search, "
                           "which takes no byte twice, does not see it",
                       {path_, 0},
                       "put a zero byte before the marker, or make the file again"});
}

PackError noMarker(const Findings& findings, const std::string& path, const std::string& what,
                   const std::string& advice) {
  for (const Finding& finding : findings) {
    if (finding.rule == "marker-unseen" && finding.place.file == path) {
      return PackError(finding.what, finding.advice, finding.place);
    }
  }
  return PackError(what, advice, {path, 0});
}

}  // namespace quillory::pack
