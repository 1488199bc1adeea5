#include "packager/commands/bundle_parts.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "formats/launch_file_format.h"
#include "formats/tail_format.h"
#include "formats/update_settings_format.h"
#include "install/version_folders.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/commands/named_jar.h"
#include "packager/commands/runtime_class_list.h"
#include "packager/content/runtime_image.h"
#include "packager/reading/program_image.h"
#include "packager/writing/launch_file_writer.h"
#include "support/folder_listing.h"
#include "support/picture_limits.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr char kUpdaterJarName[] = "updater.jar";
constexpr char kJarFolder[] = "lib/";
constexpr char kNativeFolder[] = "native/";  // where the updater looks for them
// The updater's own test of a runtime that the system offers.
constexpr char kUpdaterMainClass[] = "io.quillory.updater.Main";
constexpr char kCompatibilityClass[] = "io.quillory.updater.JreCompatibility";

std::vector<std::string> matchesOf(const std::string& pattern) {
  if (pattern.find_first_of("*?[") == std::string::npos) {
    return isFile(pattern) ? std::vector{pattern} : std::vector<std::string>{};
  }
  const fs::path path(pattern);
  const fs::path folder = path.parent_path();
  std::vector<std::string> matches;
  for (const std::string& name : namesIn(folder.empty() ? "." : folder.string())) {
    const std::string match = folder / name;
    if (fnmatch(path.filename().c_str(), name.c_str(), FNM_PERIOD) == 0 && isFile(match)) {
      matches.push_back(match);
    }
  }
  return matches;
}

std::string nameOf(const std::string& path) { return fs::path(path).filename().string(); }

LaunchFile commonLaunchFile(const Config& config) {
  LaunchFile file;
  file.appName = config.application.name;
  file.maximumHeap = config.jvm.maximumHeap;
  file.initialHeap = config.jvm.initialHeap;
  return file;
}

// Our own updater is not the user's to repair.
Jar updaterJar(const Config& config, const std::string& path) {
  if (config.updater.jar.empty()) {
    return Jar(path);
  }
  Findings findings;
  std::optional<Jar> jar = namedJar(path, config.placeOf("updater.jar"), findings);
  if (!jar) {
    throw RejectedInput(std::move(findings));
  }
  return std::move(*jar);
}

void requireUpdaterClass(const Config& config, const std::string& path, const Jar& jar,
                         const std::string& mainClass) {
  if (!mainClass.empty() && jar.hasClass(mainClass)) {
    return;
  }
  const std::string what = mainClass.empty() ? path + " does not say its main class"
                                             : path + " has no class \"" + mainClass + "\"";
  const std::string advice = "name its main class with updater.main-class";
  if (config.updater.jar.empty() && config.updater.mainClass.empty()) {
    throw PackError(what, advice, {path, 0});
  }
  const char* key = config.updater.mainClass.empty() ? "updater.jar" : "updater.main-class";
  throw RejectedInput({{Severity::kError, "main-class", what, config.placeOf(key), advice}});
}

// The place in `jars` of the one with the main class; their number where none has it.
std::size_t indexOfMainJar(const Config& config, const std::vector<std::string>& jars) {
  const auto main = std::find_if(jars.begin(), jars.end(), [&](const std::string& jar) {
    Findings ignored;  // lintFiles() has them.
    const std::optional<Jar> opened = namedJar(jar, {}, ignored);
    return opened && opened->hasClass(config.application.mainClass);
  });
  return static_cast<std::size_t>(main - jars.begin());
}

// Whether `java -jar` would run an agent before the main class.
bool hasLauncherAgent(const std::string& jar) {
  return !Jar(jar).manifestValue("Launcher-Agent-Class").empty();
}

RuntimeOptions optionsOf(const Config& config, const std::vector<std::string>& jars) {
  RuntimeOptions options{config.jvm.options, {}, config.application.module};
  const std::size_t main = indexOfMainJar(config, jars);
  if (main < jars.size()) {
    options.asked = manifestOptions(Jar(jars[main]));
  }
  return options;
}

// Makes a runtime, and returns its folder.
std::string linkedRuntime(const Config& config, const BundleTools& tools,
                          std::vector<std::string> jars, Target target,
                          const std::string& workFolder, PackCache& cache, Reporter& reporter) {
  requireModulesFor(target, config);
  reporter.line("linking a runtime");
  const RuntimeOptions options = optionsOf(config, jars);
  RuntimeConfig runtime = config.runtime;
  const std::size_t main = indexOfMainJar(config, jars);
  if (main < jars.size() && hasLauncherAgent(jars[main])) {
    runtime.addModules.emplace_back("java.instrument");
  }
  jars.push_back(tools.updaterJar);
  return linkRuntime(runtime, jars, workFolder, options, &cache);
}

std::string runtimeVersion(const Config& config, const std::string& home) {
  const std::string version =
      config.runtime.version.empty() ? versionNumberOf(home) : config.runtime.version;
  if (version.empty()) {
    throw RejectedInput(
        {{Severity::kError, "version", "the runtime has no release file that says its version",
          config.placeOf("runtime"), "version = 17 in [runtime]"}});
  }
  return version;
}

// What the updater sets before the main class, whether it comes first among the arguments, and what
// the JVM has to know of the application's modules and of its agent, which is in `mainJar` of
// `packedAs`.
std::vector<std::string> applicationOptions(const Config& config, const std::string& mainJar,
                                            const std::string& packedAs) {
  std::vector<std::string> options;
  if (!config.application.hasPropertiesArgument) {
    options.push_back("-Dquillory.arguments=user");
  }
  const std::string& module = config.application.module;
  if (!module.empty()) {
    const std::string& mainClass = config.application.mainClass;
    options.push_back(kModuleOption + module);
    // "java -m" runs a main class whatever its module exports.
    options.push_back("--add-opens=" + module + '/' + mainClass.substr(0, mainClass.rfind('.')) +
                      "=ALL-UNNAMED");
  }
  if (config.jvm.hasStartupArchive && module.empty() &&
      config.runtime.source != RuntimeSource::kNone) {
    options.emplace_back(kStartupArchiveOption);
  }
  if (!mainJar.empty() && hasLauncherAgent(mainJar)) {
    options.push_back("-Dquillory.agent=" + packedAs);
    options.emplace_back("--add-exports=java.instrument/sun.instrument=ALL-UNNAMED");
  }
  if (config.application.isSingleInstance) {
    options.push_back("-Dquillory.instance=single");
  }
  if (config.application.workingDirectory != WorkingDirectory::kStart) {
    const bool isHome = config.application.workingDirectory == WorkingDirectory::kHome;
    options.push_back(std::string(kDirectoryOption) + (isHome ? "home" : "application"));
  }
  for (const auto& [name, value] : config.jvm.environment) {
    options.push_back(std::string(kEnvironmentOption) + name + '=' + value);
  }
  for (const auto& [name, value] : config.jvm.systemProperties) {
    options.push_back("-D" + name + '=' + value);
  }
  return options;
}

// Every file that the patterns of `key` name, each once. `kind` is what a file is, for people.
std::vector<std::string> namedFiles(const Config& config, const std::string& key, const char* kind,
                                    const std::vector<std::string>& patterns) {
  std::vector<std::string> files;
  Findings findings;
  for (const std::string& pattern : patterns) {
    const std::vector<std::string> matches = matchesOf(config.resolve(pattern));
    if (matches.empty()) {
      findings.push_back({Severity::kError, "missing-file",
                          std::string("there is no ") + kind + ' ' + config.resolve(pattern),
                          config.placeOf(key), "build it, or correct the name"});
    }
    for (const std::string& match : matches) {
      if (std::find(files.begin(), files.end(), match) == files.end()) {
        files.push_back(match);
      }
    }
  }
  if (!findings.empty()) {
    throw RejectedInput(findings);
  }
  return files;
}

// The folder that is packed as it lies, without a slash at its end.
fs::path rootOf(const Config& config) {
  const fs::path root = fs::path(config.resolve(config.application.root)).lexically_normal();
  return root.has_filename() ? root : root.parent_path();
}

// Puts the jars into the tree, and their paths there on the class path.
void addJars(const Config& config, const std::vector<std::string>& jars,
             const std::vector<std::string>& packedJars, ContentTree& tree, LaunchFile& launch) {
  const bool isBeside = config.application.layout == JarLayout::kBeside;
  if (!isBeside) {
    tree.addFolder("lib");
  }
  for (std::size_t i = 0; i < jars.size(); ++i) {
    launch.classPath.push_back((isBeside ? "" : kJarFolder) + nameOf(jars[i]));
    tree.addFile(packedJars[i], launch.classPath.back());
  }
}

// The same with a tree that has them already.
void addRoot(const Config& config, const std::vector<std::string>& jars,
             const std::vector<std::string>& packedJars, ContentTree& tree, LaunchFile& launch) {
  const fs::path root = rootOf(config);
  tree.addFolderContent(root.string(), "");
  for (std::size_t i = 0; i < jars.size(); ++i) {
    launch.classPath.push_back(
        fs::path(jars[i]).lexically_normal().lexically_relative(root).string());
    if (packedJars[i] != jars[i]) {
      tree.replaceFile(packedJars[i], launch.classPath.back());
    }
  }
}

}  // namespace

std::vector<std::string> findJars(const Config& config) {
  std::vector<std::string> patterns = config.application.jars;
  if (!config.application.root.empty()) {
    const fs::path root = rootOf(config);
    if (!fs::is_directory(root)) {
      throw RejectedInput({{Severity::kError, "missing-file", "there is no folder " + root.string(),
                            config.placeOf("application.root"), "build it, or correct the name"}});
    }
    for (std::string& pattern : patterns) {
      pattern = config.application.root + '/' + pattern;
    }
  }
  return namedFiles(config, "application.jars", "jar", patterns);
}

BundlePart updaterPart(const Config& config, const BundleTools& tools,
                       const std::string& updateSettings) {
  const Jar jar = updaterJar(config, tools.updaterJar);
  LaunchFile launch = commonLaunchFile(config);
  launch.mainClass = config.updater.mainClass;
  if (launch.mainClass.empty() && jar.hasClass(kUpdaterMainClass)) {
    launch.mainClass = kUpdaterMainClass;
  }
  if (launch.mainClass.empty()) {
    launch.mainClass = jar.manifestValue("Main-Class");
  }
  requireUpdaterClass(config, tools.updaterJar, jar, launch.mainClass);
  launch.compatibilityClass = config.updater.compatibilityClass;
  if (launch.compatibilityClass.empty() && jar.hasClass(kCompatibilityClass)) {
    launch.compatibilityClass = kCompatibilityClass;
  }
  launch.classPath = {kUpdaterJarName};
  if (config.updater.jar.empty()) {
    launch.jvmOptions = {kWithApplicationOption};
  }
  ContentTree tree("updater");
  tree.addBytes(launchFileBytes(launch), kLaunchFileName);
  tree.addFile(tools.updaterJar, kUpdaterJarName);
  if (!updateSettings.empty()) {
    tree.addBytes(updateSettings, kUpdateSettingsFileName);
    tree.addFile(tools.updateProgram, kUpdateProgramName);
    tree.addFile(tools.updateWindow, kUpdateWindowName);
  }
  // Where the parameters may replace the picture, the other one would stay.
  const std::string picture =
      config.application.splash.empty() ? "" : config.resolve(config.application.splash);
  const std::string twin = config.application.splashOverride ? "" : doublePictureOf(picture);
  if (!twin.empty()) {
    tree.addFile(twin, kDoubleSplashPictureName);
  }
  return {kUpdaterName, std::to_string(config.updater.version), std::move(tree)};
}

BundlePart applicationPart(const Config& config, const std::vector<std::string>& jars,
                           const std::vector<std::string>& packedJars) {
  LaunchFile launch = commonLaunchFile(config);
  launch.mainClass = config.application.mainClass;
  launch.arguments = config.application.arguments;
  ContentTree tree("application");
  const auto add = config.application.root.empty() ? addJars : addRoot;
  add(config, jars, packedJars.empty() ? jars : packedJars, tree, launch);
  for (const std::string& library : namedFiles(config, "application.native", "native library",
                                               config.application.nativeLibraries)) {
    tree.addFile(library, kNativeFolder + nameOf(library));
  }
  for (const ExtraFile& file : config.application.files) {
    const std::string from = config.resolve(file.from);
    const std::string clean =
        fs::path(from).has_filename() ? from : from.substr(0, from.size() - 1);
    tree.addFile(clean, file.to.empty() ? nameOf(clean) : file.to);
  }
  const std::size_t main = indexOfMainJar(config, jars);
  launch.jvmOptions = main < launch.classPath.size()
                          ? applicationOptions(config, jars[main], launch.classPath[main])
                          : applicationOptions(config, "", "");
  tree.addBytes(launchFileBytes(launch), kLaunchFileName);
  return {config.application.name, std::to_string(config.application.version), std::move(tree)};
}

std::string runtimeHome(const Config& config, const BundleTools& tools,
                        const std::vector<std::string>& jars, Target target,
                        const std::string& workFolder, PackCache& cache, Reporter& reporter) {
  const std::string folder =
      config.runtime.source == RuntimeSource::kJlink
          ? linkedRuntime(config, tools, jars, target, workFolder, cache, reporter)
          : config.resolve(config.runtime.folder);
  return findJavaHome(folder, config.placeOf("runtime.folder"));
}

BundlePart runtimePart(const Config& config, const BundleTools& tools,
                       const std::vector<std::string>& jars, Target target,
                       const std::string& workFolder, PackCache& cache, Reporter& reporter) {
  const std::string home = runtimeHome(config, tools, jars, target, workFolder, cache, reporter);
  reporter.findings(accepted(lintRuntime(home, target, tools.launcher, config.placeOf("runtime"))));
  const std::string version = runtimeVersion(config, home);
  reporter.detail("runtime " + home + ", version " + version);
  ContentTree content = runtimeContent(home, config.runtime.name, version);
  addClassList(config, jars, home, content, reporter);
  return {config.runtime.name, version, std::move(content),
          programImageIn(home + "/bin/java").architectures};
}

}  // namespace quillory::pack
