// quillory.toml: what to pack and how. Every key is checked; docs/packaging.md describes them.
#pragma once
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "formats/archive_format.h"
#include "formats/params_format.h"
#include "formats/update_settings_format.h"
#include "packager/config/documents.h"
#include "packager/config/rollout.h"
#include "packager/keys/signing_key.h"
#include "packager/report/findings.h"

namespace quillory::pack {

/// A file or folder beside the jars: `from` on this machine, `to` in the application folder.
struct ExtraFile {
  std::string from;
  std::string to;
};

/// Where jars lie in the application's folder.
enum class JarLayout {
  kLib,     ///< in lib/
  kBeside,  ///< at its top, with what they expect beside them
};

/// Where the application runs.
enum class WorkingDirectory {
  kStart,        ///< where its launcher was started
  kHome,         ///< in the user's home folder
  kApplication,  ///< in the folder of its version
};

struct ApplicationConfig {
  std::string name;
  std::int64_t version = 0;
  std::string displayVersion;  ///< what people read; "" for the number
  std::string mainClass;
  std::string module;  ///< that the main class is in; "" for the class path
  /// A folder whose content is packed as it lies there, jars included; "" for none.
  std::string root;
  /// File names with * and ?, in class path order; from `root` where there is one.
  std::vector<std::string> jars;
  JarLayout layout = JarLayout::kLib;
  std::vector<ExtraFile> files;
  std::vector<std::string> arguments;
  /// Whether the path of the launch properties is the main class's first argument.
  bool hasPropertiesArgument = false;
  bool isSingleInstance = false;
  WorkingDirectory workingDirectory = WorkingDirectory::kStart;
  std::vector<std::string> nativeLibraries;  ///< file names with * and ?
  std::string identifier;
  std::string executable;
  std::string icon;
  std::string splash;
  std::int64_t minSplashMillis = 0;
  bool splashOverride = false;
  std::vector<std::string> urlSchemes;
  std::string category;
  std::string copyright;
  /// Whether jars are packed without compression inside, for small deltas; completed.
  std::optional<bool> jarsStored;
};

struct JvmConfig {
  int maximumHeap = 0;
  int initialHeap = 0;
  bool forceSpawn = false;
  std::vector<std::string> options;  ///< of every start, in the runtime that jlink makes
  Parameters systemProperties;       ///< set before the main class is loaded
  Parameters environment;            ///< of the application's process, set before it begins
  bool hasStartupArchive = true;     ///< made on the user's machine, of a packed runtime
};

struct UpdaterConfig {
  std::int64_t version = 1;
  std::string jar;        ///< "" for the one beside this program
  std::string mainClass;  ///< "" for the jar's own
  std::string compatibilityClass;
  std::string cacerts;
};

/// What the list of classes that a runtime is packed with can be, beside a file: the one that was
/// kept beside the configuration, else one that comes with us; and none.
inline constexpr char kAutomaticClassList[] = "auto";
inline constexpr char kNoClassList[] = "none";
/// The name of the one beside the configuration.
inline constexpr char kKeptClassList[] = "quillory.classlist";

enum class RuntimeSource { kNone, kFolder, kJlink };

struct RuntimeConfig {
  RuntimeSource source = RuntimeSource::kNone;
  std::string name = "JRE";
  std::string version;                  ///< "" for what the runtime's release file says
  std::string folder;                   ///< kFolder
  std::vector<std::string> modules;     ///< kJlink; empty for those that jdeps finds
  std::vector<std::string> addModules;  ///< kJlink: beside those found
  std::vector<std::string> jlinkOptions;
  std::string jdk;    ///< resolved; "" for JAVA_HOME, then PATH
  std::string jmods;  ///< resolved; kJlink: the modules to link; "" for those of the JDK
  /// kAutomaticClassList, kNoClassList, or a file, resolved.
  std::string classList = kAutomaticClassList;
};

struct InstallConfig {
  std::string type = "perm_user";  ///< as the tail has it
  std::string silentSwitch;
  std::int64_t requiredJava = 0;  ///< 0 for none
  /// Whether launchers refuse what a careful start should not take; none: where it can be done.
  std::optional<bool> hardened;
};

enum class UpdateUrlKind { kOff, kStatic, kDynamic };

/// What the release list says beside what was packed.
struct ReleaseConfig {
  std::string minimumSystem;       ///< "" for any
  std::int64_t minimumFrom = 0;    ///< 0: from every version
  std::int64_t steppingStone = 0;  ///< the number of an earlier release; 0 for none
  std::int64_t criticalBelow = 0;  ///< 0 for none
  std::string rollout;             ///< as it is written; "" for all at once
  std::string notes;               ///< a file in Markdown; "" for none
  int expiresDays = 90;
  int deltas = 5;  ///< from so many earlier releases
};

struct UpdateConfig {
  UpdateUrlKind urlKind = UpdateUrlKind::kOff;
  std::string url;
  /// Whether installations look for updates by themselves: a channel or a mode is named. Without
  /// that the updater's archive is the one that it always was.
  bool hasClient = false;
  std::string channel = kStandardChannel;
  UpdateMode mode = UpdateMode::kBackground;
  std::int64_t atStartSeconds = 20;
  std::int64_t checkHours = 24;
  std::int64_t keepVersions = 2;
  std::vector<std::string> mirrors;   ///< tried in this order, after the URL
  std::string reserveKey;             ///< a file with the public half
  std::vector<std::string> nextKeys;  ///< files with the keys that count from the next release on
  ReleaseConfig release;
};

struct SigningConfig {
  std::string key;
  std::string nextKey;  ///< signs release lists as well; "" for none
  Salt salt = Salt::kRandom;
};

enum class TailPlace { kFile, kExecutable };

struct BundleConfig {
  std::string output = "dist";
  TailPlace tail = TailPlace::kFile;
  int compression = 6;
  bool isOnline = false;  ///< without runtime and application, which the first start fetches
  std::string launcher;   ///< "" for the one beside this program, also for the next two
  /// What undoes each of kCompressions, in their order.
  std::array<std::string, kCompressions.size()> decompressors;
  std::string elevMac;
  std::string updateProgram;
  std::string updateWindow;
};

/// What only bundles for macOS have.
struct MacConfig {
  bool followsAppearance = false;  ///< dark or light, as the user has chosen
  Parameters plist;                ///< more keys of Info.plist
};

struct Config {
  std::string file;    ///< as it was named
  std::string folder;  ///< the folder that relative paths start from
  ApplicationConfig application;
  JvmConfig jvm;
  UpdaterConfig updater;
  RuntimeConfig runtime;
  InstallConfig install;
  UpdateConfig update;
  SigningConfig signing;
  BundleConfig bundle;
  MacConfig macos;
  std::vector<DocumentConfig> documents;
  Parameters parameters;
  std::map<std::string, Place> places;  ///< "application.name" to where it stands
  /// Keys that have a value although nobody gave them one; see completed().
  std::set<std::string> filledIn;

  /// Where a key stands, or the file when it does not.
  Place placeOf(const std::string& key) const;
  /// A path of the configuration, from its folder.
  std::string resolve(const std::string& path) const;
};

/// Reads a file, completes it and judges it. Throws RejectedInput with everything that is wrong
/// with it, PackError when it cannot be read. Warnings are added to `findings`.
Config loadConfig(const std::string& path, Findings& findings);

}  // namespace quillory::pack
