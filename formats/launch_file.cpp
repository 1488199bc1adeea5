#include "formats/launch_file.h"

#include "formats/record_stream.h"
#include "support/log.h"

namespace quillory {
namespace {

// The first file versions that have these records.
constexpr int kVersionWithCompatibilityClass = 3;
constexpr int kVersionWithInstallClasses = 4;
constexpr int kVersionWithJvmOptions = 5;
constexpr int kVersionWithMustFork = 6;

}  // namespace

LaunchHeader readLaunchHeader(std::FILE* stream) {
  LaunchHeader header;
  header.version = readInt(stream, "LaunchFile VER");
  header.mainClass = readText(stream, "Class");
  header.mainClassOnUpdate = readText(stream, "Class OnUpdate");
  header.appName = readText(stream, "App Name");
  header.icns = readText(stream, "OS ICNS");
  header.urlRequired = readBoolean(stream, "URL Required");
  header.jvmMemory = readInt(stream, "jvmMem (old)");
  header.jvmStack = readInt(stream, "jvmStack (old)");
  return header;
}

std::vector<std::string> readLaunchEntries(std::FILE* stream, long count, const char* entryName) {
  std::vector<std::string> entries;
  for (long i = 0; i < count && !isAtEnd(stream); ++i)
    entries.push_back(readText(stream, entryName));
  return entries;
}

LaunchTrailer readLaunchTrailer(std::FILE* stream, int version) {
  LaunchTrailer trailer;
  if (version < kVersionWithCompatibilityClass) return trailer;
  trailer.hasCompatibilityClass = true;
  trailer.compatibilityClass = readText(stream, "Main Class JRECompatibility");
  logMessage("[Extractor] Read JRE compatibility class %s\n", trailer.compatibilityClass.c_str());

  // What follows is for the Java side. It is read, so that a value that does not fit shows up in
  // the output of this start too, and then dropped.
  if (version < kVersionWithInstallClasses) return trailer;
  readText(stream, "Main Class PostInstall");
  readText(stream, "Main Class PreUninstall");
  if (version < kVersionWithJvmOptions) return trailer;
  readLaunchEntries(stream, readLong(stream, "App JVM Option Count"), "App JVM Option Entry");
  if (version < kVersionWithMustFork) return trailer;
  readBoolean(stream, "Must Fork");
  return trailer;
}

}  // namespace quillory
