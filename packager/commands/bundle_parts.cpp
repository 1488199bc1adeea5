#include "packager/commands/bundle_parts.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "formats/launch_file.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/content/icns.h"
#include "packager/content/jar_reader.h"
#include "packager/writing/launch_file_writer.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr char kUpdaterJarName[] = "updater.jar";
constexpr char kJarFolder[] = "lib/";
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

// A jar that the configuration names at `place`; none, with a finding, when it is not one.
std::optional<Jar> namedJar(const std::string& path, const Place& place, Findings& findings) {
  try {
    return Jar(path);
  } catch (const PackError& e) {
    findings.push_back({Severity::kError, "jar", path + ": " + e.what(), place,
                        "build it again, or correct the name"});
    return std::nullopt;
  }
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

void lintExtraFiles(const Config& config, Findings& findings) {
  for (const ExtraFile& file : config.application.files) {
    const std::string path = config.resolve(file.from);
    std::error_code ignored;
    // A link that leads nowhere is there; the tree of content has its own words for that.
    if (fs::symlink_status(path, ignored).type() == fs::file_type::not_found) {
      findings.push_back({Severity::kError, "missing-file", "there is no file or folder " + path,
                          config.placeOf("application.files"),
                          "make it, correct the name, or leave it out"});
    }
  }
}

void lintPicture(const Config& config, const std::string& key, const std::string& named,
                 std::string (*flawOf)(std::string_view), const char* advice, Findings& findings) {
  if (named.empty()) {
    return;
  }
  const std::string path = config.resolve(named);
  const Place place = config.placeOf(key);
  if (!isFile(path)) {
    findings.push_back({Severity::kError, "missing-file", "there is no file " + path, place,
                        "correct the name, or leave out " + key});
    return;
  }
  const std::string flaw = flawOf(readWholeFile(path));
  if (!flaw.empty()) {
    findings.push_back({Severity::kError, "picture", path + ' ' + flaw, place, advice});
  }
}

}  // namespace

std::vector<std::string> findJars(const Config& config) {
  std::vector<std::string> jars;
  Findings findings;
  for (const std::string& pattern : config.application.jars) {
    const std::vector<std::string> matches = matchesOf(config.resolve(pattern));
    if (matches.empty()) {
      findings.push_back({Severity::kError, "missing-file",
                          "there is no jar " + config.resolve(pattern),
                          config.placeOf("application.jars"), "build it, or correct the name"});
    }
    for (const std::string& match : matches) {
      if (std::find(jars.begin(), jars.end(), match) == jars.end()) {
        jars.push_back(match);
      }
    }
  }
  if (!findings.empty()) {
    throw RejectedInput(findings);
  }
  return jars;
}

ContentTree updaterContent(const Config& config, const BundleTools& tools) {
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
  ContentTree tree("updater");
  tree.addBytes(launchFileBytes(launch), kLaunchFileName);
  tree.addFile(tools.updaterJar, kUpdaterJarName);
  return tree;
}

Findings lintApplicationPaths(const ContentTree& tree) {
  Findings findings;
  for (const char* name : {"App.p2", "App.p2.l2"}) {
    if (tree.contains(name)) {
      findings.push_back(
          {Severity::kError,
           "path-taken",
           std::string("\"") + name +
               "\" of the application is where the archive itself is put while it is "
               "extracted",
           {tree.entries().at(name).source, 0},
           "rename it"});
    }
  }
  return findings;
}

ContentTree applicationContent(const Config& config, const std::vector<std::string>& jars) {
  LaunchFile launch = commonLaunchFile(config);
  launch.mainClass = config.application.mainClass;
  launch.arguments = config.application.arguments;
  ContentTree tree("application");
  tree.addFolder("lib");
  for (const std::string& jar : jars) {
    launch.classPath.push_back(kJarFolder + nameOf(jar));
    tree.addFile(jar, launch.classPath.back());
  }
  for (const ExtraFile& file : config.application.files) {
    const std::string from = config.resolve(file.from);
    const std::string clean =
        fs::path(from).has_filename() ? from : from.substr(0, from.size() - 1);
    tree.addFile(clean, file.to.empty() ? nameOf(clean) : file.to);
  }
  tree.addBytes(launchFileBytes(launch), kLaunchFileName);
  return tree;
}

Findings lintFiles(const Config& config, const std::vector<std::string>& jars) {
  Findings findings;
  bool hasMainClass = false;
  for (const std::string& path : jars) {
    if (nameOf(path).find(':') != std::string::npos) {
      findings.push_back({Severity::kError,
                          "name-colon",
                          "a jar's name holds a \":\", which separates the entries of a class path",
                          {path, 0},
                          "rename it"});
    }
    const std::optional<Jar> jar = namedJar(path, config.placeOf("application.jars"), findings);
    // Nobody knows what is in a damaged one.
    hasMainClass = !jar || jar->hasClass(config.application.mainClass) || hasMainClass;
  }
  if (!hasMainClass) {
    findings.push_back({Severity::kError, "main-class",
                        "no jar has the class " + config.application.mainClass,
                        config.placeOf("application.main-class"),
                        "write its full name, and see that its jar is in application.jars"});
  }
  lintExtraFiles(config, findings);
  lintPicture(config, "application.splash", config.application.splash, flawOfPicture,
              "save it as PNG: the splash would stay empty", findings);
  lintPicture(config, "application.icon", config.application.icon, flawOfIcon,
              "save it as PNG, best of 1024 by 1024 pixels, or as icns", findings);
  if (!config.updater.cacerts.empty() && !isFile(config.resolve(config.updater.cacerts))) {
    findings.push_back({Severity::kError, "missing-file",
                        "there is no file " + config.resolve(config.updater.cacerts),
                        config.placeOf("updater.cacerts"),
                        "correct the name, or leave out updater.cacerts"});
  }
  return findings;
}

}  // namespace quillory::pack
