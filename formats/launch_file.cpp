#include "formats/launch_file.h"

#include <sys/stat.h>

#include <variant>

#include "formats/record_stream.h"
#include "support/log.h"
#include "support/paths.h"

namespace quillory {
namespace {

// Reads one record of `file`, of the kind that its place has.
struct RecordReader {
  std::FILE* stream;
  const LaunchFileRecord& record;
  LaunchFile& file;

  void operator()(int LaunchFile::*place) const { file.*place = readInt(stream, record.name); }
  void operator()(bool LaunchFile::*place) const { file.*place = readBoolean(stream, record.name); }
  void operator()(std::string LaunchFile::*place) const {
    file.*place = readText(stream, record.name);
  }
  void operator()(std::vector<std::string> LaunchFile::*place) const {
    const long count = readLong(stream, record.name);
    file.*place = readLaunchEntries(stream, count, record.entryName);
  }
};

void readRecord(std::FILE* stream, const LaunchFileRecord& record, LaunchFile& file) {
  std::visit(RecordReader{stream, record, file}, record.value);
}

}  // namespace

bool holdsLaunchFile(const std::string& folder) {
  struct stat found {};
  const std::string path = joinPath(folder, kLaunchFileName);
  return stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode) && found.st_size > 0;
}

LaunchHeader readLaunchHeader(std::FILE* stream) {
  LaunchFile file;
  for (std::size_t i = 0; i < kLaunchHeaderRecords; ++i)
    readRecord(stream, kLaunchFileRecords[i], file);
  return {.version = file.version,
          .mainClass = file.mainClass,
          .mainClassOnUpdate = file.mainClassOnUpdate,
          .appName = file.appName,
          .icns = file.icns,
          .urlRequired = file.urlRequired,
          .jvmMemory = file.maximumHeap,
          .jvmStack = file.initialHeap};
}

std::vector<std::string> readLaunchEntries(std::FILE* stream, long count, const char* entryName) {
  std::vector<std::string> entries;
  for (long i = 0; i < count && !isAtEnd(stream); ++i)
    entries.push_back(readText(stream, entryName));
  return entries;
}

LaunchTrailer readLaunchTrailer(std::FILE* stream, int version) {
  LaunchTrailer trailer;
  LaunchFile file;
  // Most of what follows the compatibility class is for the Java side. It is read, so that a value
  // that does not fit shows up in the output of this start too, and then dropped.
  for (std::size_t i = kLaunchTrailerStart; i < kLaunchFileRecords.size(); ++i) {
    const LaunchFileRecord& record = kLaunchFileRecords[i];
    if (version < record.sinceVersion) return trailer;
    readRecord(stream, record, file);
    trailer.jvmOptions = file.jvmOptions;
    if (i != kLaunchTrailerStart) continue;
    trailer.hasCompatibilityClass = true;
    trailer.compatibilityClass = file.compatibilityClass;
    logMessage("[Extractor] Read JRE compatibility class %s\n", file.compatibilityClass.c_str());
  }
  return trailer;
}

std::vector<std::string> readLaunchOptions(std::FILE* stream, int version) {
  LaunchFile file;
  for (std::size_t i = kLaunchTrailerStart; i < kLaunchFileRecords.size(); ++i) {
    const LaunchFileRecord& record = kLaunchFileRecords[i];
    if (version < record.sinceVersion) break;
    readRecord(stream, record, file);
  }
  return file.jvmOptions;
}

}  // namespace quillory
