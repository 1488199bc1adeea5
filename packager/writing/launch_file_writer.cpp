#include "packager/writing/launch_file_writer.h"

#include "packager/writing/record_writer.h"

namespace quillory::pack {
namespace {

constexpr int kVersion = 6;

void writeList(RecordWriter& records, const char* countName, const char* entryName,
               const std::vector<std::string>& entries) {
  records.number(countName, static_cast<std::int64_t>(entries.size()));
  for (const std::string& entry : entries) {
    records.text(entryName, entry);
  }
}

}  // namespace

void writeLaunchFile(ByteSink& sink, const LaunchFile& file) {
  RecordWriter records(sink);
  records.number("LaunchFile VER", kVersion);
  records.text("Class", file.mainClass);
  records.text("Class OnUpdate", file.mainClassOnUpdate);
  records.text("App Name", file.appName);
  records.text("OS ICNS", file.icns);
  records.boolean("URL Required", file.urlRequired);
  records.number("jvmMem (old)", file.maximumHeap);
  // The launcher makes -Xms of this record, whatever its name says.
  records.number("jvmStack (old)", file.initialHeap);
  writeList(records, "Classpath Count", "Classpath Entry", file.classPath);
  writeList(records, "Extra Args Count", "Extra Args Entry", file.arguments);
  records.text("Main Class JRECompatibility", file.compatibilityClass);
  records.text("Main Class PostInstall", "");
  records.text("Main Class PreUninstall", "");
  writeList(records, "App JVM Option Count", "App JVM Option Entry", file.jvmOptions);
  records.boolean("Must Fork", file.mustFork);
}

std::string launchFileBytes(const LaunchFile& file) {
  StringSink bytes;
  writeLaunchFile(bytes, file);
  return bytes.bytes();
}

}  // namespace quillory::pack
