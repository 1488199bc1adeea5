// The launch file's records, once, for who reads, writes and shows them.
// docs/formats/launch-file.md has the bytes.
#pragma once
#include <array>
#include <string>
#include <variant>
#include <vector>

namespace quillory {

inline constexpr char kLaunchFileName[] = "QuilloryLaunch";

/// The newest version of the file: the one that has all records.
inline constexpr int kLaunchFileVersion = 6;

/// The option by which an updater's launch file asks for the application that it will run: the JVM
/// begins with that application's class path behind the updater's, and with its options.
inline constexpr char kWithApplicationOption[] = "-Dquillory.class.path=application";

/// The option by which an application's launch file says that its main class is in a module, which
/// is named behind it: what would be its class path is then its module path.
inline constexpr char kModuleOption[] = "-Dquillory.module=";

/// Options of an application that tell the launcher how its process is to be, before there is a
/// JVM:
/// "<name>=<value>" behind the first, "home" or "application" behind the second.
inline constexpr char kEnvironmentOption[] = "-Dquillory.environment.";
inline constexpr char kDirectoryOption[] = "-Dquillory.directory=";

/// The option by which an application's launch file wants an archive of classes made on the user's
/// machine, and used.
inline constexpr char kStartupArchiveOption[] = "-Dquillory.startup.archive=true";

/// What a launch file says. Texts that are missing are "".
struct LaunchFile {
  std::string mainClass{};
  std::string mainClassOnUpdate{};
  /// File name of the copy of `java` that runs the application.
  std::string appName{};
  std::string icns{};
  bool urlRequired = false;
  /// Largest and initial heap in MiB; 0 leaves them to the JVM.
  int maximumHeap = 0;
  int initialHeap = 0;
  std::vector<std::string> classPath{};
  std::vector<std::string> arguments{};
  std::string compatibilityClass{};
  std::vector<std::string> jvmOptions{};
  bool mustFork = false;
  std::string classAfterInstall{};
  std::string classBeforeUninstall{};
  int version = kLaunchFileVersion;
};

/// A record: its name, which is the first file version that has it, what people are shown it as,
/// and where its value is kept. A list is a count, and that many records of the second name.
struct LaunchFileRecord {
  const char* name;
  int sinceVersion;
  const char* shownAs;
  std::variant<int LaunchFile::*, bool LaunchFile::*, std::string LaunchFile::*,
               std::vector<std::string> LaunchFile::*>
      value;
  const char* entryName = nullptr;
};

inline constexpr LaunchFileRecord kClassPathRecord = {"Classpath Count", 1, "class path",
                                                      &LaunchFile::classPath, "Classpath Entry"};
inline constexpr LaunchFileRecord kArgumentsRecord = {"Extra Args Count", 1, "arguments",
                                                      &LaunchFile::arguments, "Extra Args Entry"};

/// All records, in the order in which they stand in the file.
inline constexpr std::array<LaunchFileRecord, 15> kLaunchFileRecords = {{
    {"LaunchFile VER", 1, "version", &LaunchFile::version},
    {"Class", 1, "main class", &LaunchFile::mainClass},
    {"Class OnUpdate", 1, "class on update", &LaunchFile::mainClassOnUpdate},
    {"App Name", 1, "application", &LaunchFile::appName},
    {"OS ICNS", 1, "icon", &LaunchFile::icns},
    {"URL Required", 1, "url required", &LaunchFile::urlRequired},
    {"jvmMem (old)", 1, "largest heap MiB", &LaunchFile::maximumHeap},
    // The launcher makes -Xms of it, whatever its name says.
    {"jvmStack (old)", 1, "initial heap MiB", &LaunchFile::initialHeap},
    kClassPathRecord,
    kArgumentsRecord,
    {"Main Class JRECompatibility", 3, "compatibility class", &LaunchFile::compatibilityClass},
    {"Main Class PostInstall", 4, "class after install", &LaunchFile::classAfterInstall},
    {"Main Class PreUninstall", 4, "class before uninstall", &LaunchFile::classBeforeUninstall},
    {"App JVM Option Count", 5, "jvm options", &LaunchFile::jvmOptions, "App JVM Option Entry"},
    {"Must Fork", 6, "must fork", &LaunchFile::mustFork},
}};

/// How many stand before the class path, and before what not every version has.
inline constexpr std::size_t kLaunchHeaderRecords = 8;
inline constexpr std::size_t kLaunchTrailerStart = 10;

}  // namespace quillory
