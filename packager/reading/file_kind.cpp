#include "packager/reading/file_kind.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "formats/archive_format.h"
#include "formats/launch_file_format.h"
#include "formats/launch_properties_format.h"
#include "formats/markers.h"
#include "formats/property_block.h"
#include "formats/remembered_options_format.h"
#include "formats/tail_format.h"
#include "formats/update_settings_format.h"
#include "formats/version_file_format.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/record_input.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kHead = 512;
constexpr std::size_t kLzmaLength = 5;  // where it stands in the header

constexpr std::string_view kReleasesEnd = "-releases";
constexpr std::string_view kDeltaEnd = "-delta";

// One in force, or one that is kept under its number.
bool isReleaseListName(const std::string& name) {
  const std::size_t last = name.find_last_not_of("0123456789");
  const std::string ended = name.substr(0, last == name.npos ? 0 : last + 1);
  const std::string end = std::string(kReleasesEnd) + (ended.size() < name.size() ? "-" : "");
  return name.starts_with(kReleasePrefix) && ended.ends_with(end);
}

FileKind kindByName(const std::string& name) {
  if (name == kTailFileName) return FileKind::kTail;
  if (name == kLaunchFileName) return FileKind::kLaunchFile;
  if (name.starts_with(kLaunchPropertiesPrefix)) return FileKind::kLaunchProperties;
  if (name.starts_with(kRememberedOptionsPrefix)) return FileKind::kRememberedOptions;
  if (name.ends_with(kVersionFileSuffix)) return FileKind::kVersionFile;
  if (name == kUpdateSettingsFileName) return FileKind::kUpdateSettings;
  if (isReleaseListName(name)) return FileKind::kReleaseList;
  if (name.starts_with(kReleasePrefix) && name.ends_with(kDeltaEnd)) return FileKind::kDelta;
  if (isArchiveName(name))
    return compressionOf(name) != nullptr ? FileKind::kCompressedArchive : FileKind::kArchive;
  return FileKind::kUnknown;
}

// The text of the record that begins at `at`; `at` moves behind it. False without a terminator.
bool nextRecord(const std::string& bytes, std::size_t& at, std::string& value) {
  const std::size_t end = bytes.find('\0', at);
  if (end == std::string::npos) {
    return false;
  }
  value = bytes.substr(at, end - at);
  at = end + 1;
  return true;
}

bool isNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// An entry: a type of one digit, a path, and for files a length.
bool looksLikeArchive(const std::string& head) {
  std::size_t at = 0;
  std::string type, path, length;
  if (!nextRecord(head, at, type) || type.size() > 1) return false;
  if (type.empty()) return head.size() == 1;
  if (!isNumber(type) || !nextRecord(head, at, path) || path.empty()) return false;
  return type == "1" || (nextRecord(head, at, length) && isNumber(length));
}

FileKind kindByContent(const std::string& path) {
  Findings ignored;
  RecordInput input(path, ignored);
  const std::string head = input.bytes(kHead);
  if (head.starts_with("-----BEGIN ")) return FileKind::kSigningKey;
  if (head.starts_with(kStaticPrefix) || head.starts_with(kDynamicPrefix)) {
    return FileKind::kLaunchProperties;
  }
  // The usual properties byte of LZMA, then a dictionary of whole MiB; or that of what is tuned to
  // classes, then such a dictionary and the length that stands for an end marker.
  if (head.starts_with(std::string_view("\x5d\0", 2)) ||
      (head.starts_with(std::string_view("\x04\0\0", 3)) &&
       head.find(std::string(8, '\xff'), kLzmaLength) == kLzmaLength)) {
    return FileKind::kCompressedArchive;
  }
  if (looksLikeArchive(head)) return FileKind::kArchive;
  for (const auto& [marker, kind] : {std::pair{tailMarker(), FileKind::kExecutable},
                                     std::pair{paramsMarker(), FileKind::kParameters}}) {
    input.seek(0);
    if (input.holdsMarker(marker)) {
      return kind;
    }
  }
  return FileKind::kUnknown;
}

}  // namespace

const std::vector<std::string>& fileKindNames() {
  static const std::vector<std::string> names = {"unknown",
                                                 "bundle",
                                                 "tail",
                                                 "executable",
                                                 "parameters",
                                                 "archive",
                                                 "compressed-archive",
                                                 "launch-file",
                                                 "launch-properties",
                                                 "remembered-options",
                                                 "version-file",
                                                 "key",
                                                 "release-list",
                                                 "delta",
                                                 "update-settings"};
  return names;
}

FileKind fileKindNamed(const std::string& name) {
  const auto& names = fileKindNames();
  const auto found = std::find(names.begin(), names.end(), name);
  return found == names.end() ? FileKind::kUnknown : static_cast<FileKind>(found - names.begin());
}

FileKind fileKindOf(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) {
    throw PackError("there is no such file", "", {path, 0});
  }
  if (fs::is_directory(status)) {
    return isBundle(path) ? FileKind::kBundle : FileKind::kUnknown;
  }
  const FileKind kind = kindByName(fs::path(path).filename().string());
  return kind != FileKind::kUnknown ? kind : kindByContent(path);
}

}  // namespace quillory::pack
