#include "packager/config/config.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <utility>

#include "packager/config/config_completion.h"
#include "packager/config/config_lint.h"
#include "packager/config/config_section.h"
#include "packager/config/toml_file.h"

namespace quillory::pack {
namespace {

constexpr int kMostMebibytes = 1024 * 1024;
constexpr std::int64_t kLongestSplashMillis = 600'000;
constexpr std::int64_t kLargestReleaseNumber = 1'000'000'000;
constexpr int kLongestExpiry = 3650;  // days
constexpr int kMostDeltas = 20;

const std::vector<std::string> kSections = {"application", "jvm",        "updater",  "runtime",
                                            "install",     "update",     "signing",  "bundle",
                                            "macos",       "parameters", "documents"};

// "module/class", as "java -m" has it, instead of a class alone.
void readModule(ConfigSection& section, ApplicationConfig& out) {
  if (!section.has("module")) {
    return;
  }
  std::string text;
  section.text("module", text);
  const std::size_t slash = text.find('/');
  if (section.has("main-class")) {
    section.error("main-class", "main-class", "[application] has main-class and module",
                  "keep one of the two: module names the class, too");
  } else if (slash == 0 || slash == std::string::npos || slash + 1 == text.size() ||
             text.find('.', slash) == std::string::npos) {
    section.error("module", "main-class",
                  "application.module is not the name of a module and of a class in it",
                  "write it as for java -m: module = \"com.example/com.example.Main\"");
  }
  out.module = text.substr(0, slash);
  out.mainClass = slash == std::string::npos ? "" : text.substr(slash + 1);
}

void readApplication(ConfigSection section, ApplicationConfig& out) {
  section.text("name", out.name);
  section.version("version", out.version);
  section.text("display-version", out.displayVersion);
  section.text("main-class", out.mainClass);
  readModule(section, out);
  section.text("root", out.root);
  section.texts("jars", out.jars);
  int layout = 0;
  section.choice("layout", {"lib", "beside"}, layout);
  out.layout = static_cast<JarLayout>(layout);
  section.files("files", out.files);
  section.texts("arguments", out.arguments);
  int properties = 0;
  section.choice("launch-properties", {"property", "argument"}, properties);
  out.hasPropertiesArgument = properties == 1;
  section.flag("single-instance", out.isSingleInstance);
  int directory = 0;
  section.choice("working-directory", {"start", "home", "application"}, directory);
  out.workingDirectory = static_cast<WorkingDirectory>(directory);
  section.texts("native", out.nativeLibraries);
  section.text("identifier", out.identifier);
  section.text("executable", out.executable);
  section.text("icon", out.icon);
  section.text("splash", out.splash);
  section.number("min-splash-ms", out.minSplashMillis, 0, kLongestSplashMillis);
  section.flag("splash-override", out.splashOverride);
  section.texts("url-schemes", out.urlSchemes);
  section.text("category", out.category);
  section.text("copyright", out.copyright);
  bool jarsStored = true;
  section.flag("jars-stored", jarsStored);
  out.jarsStored = section.has("jars-stored") ? std::optional(jarsStored) : std::nullopt;
  section.require("name", "name = \"My Application\" in [application]");
  section.require("version", "version = 1 in [application]; raise it with every release");
  if (!section.has("module")) {
    section.require("main-class", "main-class = \"com.example.Main\" in [application]");
  }
  section.require("jars", "jars = [\"my.jar\", \"lib/*.jar\"] in [application]");
  section.rejectUnknown();
}

void readJvm(ConfigSection section, JvmConfig& out) {
  section.number("memory-mb", out.maximumHeap, 0, kMostMebibytes);
  section.number("initial-memory-mb", out.initialHeap, 0, kMostMebibytes);
  section.flag("force-spawn", out.forceSpawn);
  section.texts("options", out.options);
  section.pairs("system-properties", out.systemProperties);
  section.pairs("environment", out.environment);
  section.flag("startup-archive", out.hasStartupArchive);
  section.rejectUnknown();
}

void readUpdater(ConfigSection section, UpdaterConfig& out) {
  section.version("version", out.version);
  section.text("jar", out.jar);
  section.text("main-class", out.mainClass);
  section.text("compatibility-class", out.compatibilityClass);
  section.text("cacerts", out.cacerts);
  section.rejectUnknown();
}

void readRuntime(ConfigSection section, RuntimeConfig& out) {
  section.text("name", out.name);
  if (section.has("version")) {
    std::int64_t version = 0;
    section.version("version", version);
    out.version = std::to_string(version);
  } else {
    section.text("version", out.version);
  }
  section.text("folder", out.folder);
  bool jlink = section.has("modules");
  section.flag("jlink", jlink);
  section.texts("modules", out.modules);
  section.texts("add-modules", out.addModules);
  section.texts("jlink-options", out.jlinkOptions);
  section.text("jdk", out.jdk);
  section.text("jmods", out.jmods);
  section.text("class-list", out.classList);
  section.rejectUnknown();
  if (jlink && !out.folder.empty()) {
    section.error("folder", "runtime-source", "[runtime] names a folder and asks for jlink as well",
                  "keep one of the two");
  }
  out.source = jlink                ? RuntimeSource::kJlink
               : out.folder.empty() ? RuntimeSource::kNone
                                    : RuntimeSource::kFolder;
}

void readInstall(ConfigSection section, InstallConfig& out) {
  int place = 0;
  section.choice("for", {"user", "all-users", "temporary"}, place);
  out.type = place == 0 ? "perm_user" : place == 1 ? "perm_all" : "temporary";
  section.text("silent-switch", out.silentSwitch);
  section.number("required-java", out.requiredJava, 0, 9999);
  bool hardened = true;
  section.flag("hardened", hardened);
  out.hardened = section.has("hardened") ? std::optional(hardened) : std::nullopt;
  section.rejectUnknown();
}

void readRelease(ConfigSection& section, ReleaseConfig& out) {
  section.text("minimum-system", out.minimumSystem);
  section.version("minimum-from", out.minimumFrom);
  section.number("stepping-stone", out.steppingStone, 1, kLargestReleaseNumber);
  section.version("critical-below", out.criticalBelow);
  section.text("rollout", out.rollout);
  section.text("notes", out.notes);
  section.number("expires-days", out.expiresDays, 1, kLongestExpiry);
  section.number("deltas", out.deltas, 0, kMostDeltas);
}

void readUpdate(ConfigSection section, UpdateConfig& out) {
  section.text("url", out.url);
  bool dynamic = false;
  section.flag("dynamic", dynamic);
  out.hasClient = section.has("channel") || section.has("mode");
  section.text("channel", out.channel);
  int mode = 0;
  section.choice("mode", {kUpdateModeNames.begin(), kUpdateModeNames.end()}, mode);
  out.mode = static_cast<UpdateMode>(mode);
  section.number("at-start-seconds", out.atStartSeconds, 1, kMaxAtStartSeconds);
  section.number("check-hours", out.checkHours, 1, kMaxCheckHours);
  section.number("keep-versions", out.keepVersions, kMinKeepVersions, kMaxKeepVersions);
  section.texts("mirrors", out.mirrors);
  section.text("reserve-key", out.reserveKey);
  section.texts("next-keys", out.nextKeys);
  readRelease(section, out.release);
  section.rejectUnknown();
  out.urlKind = dynamic           ? UpdateUrlKind::kDynamic
                : out.url.empty() ? UpdateUrlKind::kOff
                                  : UpdateUrlKind::kStatic;
}

void readSigning(ConfigSection section, SigningConfig& out) {
  section.text("key", out.key);
  section.text("next-key", out.nextKey);
  int salt = 0;
  section.choice("salt", {"random", "derived"}, salt);
  out.salt = salt == 0 ? Salt::kRandom : Salt::kDerived;
  section.rejectUnknown();
}

void readBundle(ConfigSection section, BundleConfig& out) {
  section.text("output", out.output);
  int tail = 0;
  section.choice("tail", {"file", "executable"}, tail);
  out.tail = tail == 0 ? TailPlace::kFile : TailPlace::kExecutable;
  section.number("compression", out.compression, 0, 9);
  section.flag("online", out.isOnline);
  section.text("launcher", out.launcher);
  for (std::size_t i = 0; i < kCompressions.size(); ++i)
    section.text(kCompressions[i].tool, out.decompressors[i]);
  section.text("elev-mac", out.elevMac);
  section.text("quillory-update", out.updateProgram);
  section.text("quillory-update-window", out.updateWindow);
  section.rejectUnknown();
}

void readMacOS(ConfigSection section, MacConfig& out) {
  section.flag("follows-appearance", out.followsAppearance);
  section.pairs("plist", out.plist);
  section.rejectUnknown();
}

void readDocument(ConfigSection section, DocumentConfig& out) {
  section.text("name", out.name);
  section.texts("extensions", out.extensions);
  int role = 0;
  section.choice("role", {"editor", "viewer", "none"}, role);
  out.role = static_cast<DocumentRole>(role);
  section.text("icon", out.icon);
  section.require("name", "name = \"Letter\" in [[documents]], for people");
  section.require("extensions", "extensions = [\"letter\"] in [[documents]]");
  section.rejectUnknown();
}

// Each [[documents]] is a table of its own.
void readDocuments(const TomlValue::Table& root, Config& config, Findings& found) {
  const TomlValue* value = find(root, "documents");
  if (value == nullptr) {
    return;
  }
  const auto* list = value->as<TomlValue::List>();
  if (list == nullptr) {
    found.push_back({Severity::kError,
                     "wrong-kind",
                     "documents is " + kindOf(*value),
                     {config.file, value->line},
                     "write [[documents]], in two brackets"});
    return;
  }
  for (const TomlValue& item : *list) {
    DocumentConfig document;
    document.line = item.line;
    readDocument({{{"documents", item}}, "documents", config, found}, document);
    config.documents.push_back(std::move(document));
  }
}

// The file as it is written: what is missing has its default, or nothing.
Config readConfig(const std::string& path, Findings& found) {
  Config config;
  config.file = path;
  config.folder = std::filesystem::path(path).parent_path().string();
  const TomlValue::Table root = readTomlFile(path);
  rejectUnknownSections(root, kSections, path, found);
  readApplication({root, "application", config, found}, config.application);
  readJvm({root, "jvm", config, found}, config.jvm);
  readUpdater({root, "updater", config, found}, config.updater);
  readRuntime({root, "runtime", config, found}, config.runtime);
  readInstall({root, "install", config, found}, config.install);
  readUpdate({root, "update", config, found}, config.update);
  readSigning({root, "signing", config, found}, config.signing);
  readBundle({root, "bundle", config, found}, config.bundle);
  readMacOS({root, "macos", config, found}, config.macos);
  readDocuments(root, config, found);
  ConfigSection(root, "parameters", config, found).pairs(config.parameters);
  return config;
}

}  // namespace

Place Config::placeOf(const std::string& key) const {
  const auto found = places.find(key);
  return found == places.end() ? Place{file, 0} : found->second;
}

std::string Config::resolve(const std::string& path) const {
  const std::filesystem::path given(path);
  return given.is_absolute() || folder.empty() ? path : folder + '/' + path;
}

Config loadConfig(const std::string& path, Findings& findings) {
  Findings found;
  Config config = readConfig(path, found);
  if (!hasErrors(found)) {
    config = completed(std::move(config));
    append(found, lintConfig(config));
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const Finding& a, const Finding& b) { return a.place.line < b.place.line; });
  if (hasErrors(found)) {
    throw RejectedInput(std::move(found));
  }
  append(findings, found);
  return config;
}

}  // namespace quillory::pack
