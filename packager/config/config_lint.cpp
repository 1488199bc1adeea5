#include "packager/config/config_lint.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <utility>

#include "formats/launch_file_format.h"
#include "formats/params_format.h"
#include "formats/record_stream.h"
#include "formats/tail_format.h"
#include "formats/update_url.h"
#include "packager/config/config_names.h"
#include "packager/config/parameter_rules.h"
#include "packager/config/update_lint.h"

namespace quillory::pack {
namespace {

constexpr std::size_t kLongestRuntimeVersion = 50;

class Linter {
 public:
  explicit Linter(const Config& config) : config_(config) {}

  Findings run() {
    append(findings_, lintNames(config_));
    texts();
    root();
    memory();
    systemProperties();
    environment();
    runtimeSource();
    runtimeKeys();
    ownUpdater();
    output();
    updateUrl();
    append(findings_, lintUpdates(config_));
    urlSchemes();
    documents();
    runtimeVersion();
    parameters();
    signing();
    return std::move(findings_);
  }

 private:
  void add(Severity severity, const char* rule, const std::string& key, const std::string& what,
           const std::string& advice) {
    findings_.push_back({severity, rule, what, config_.placeOf(key), advice});
  }
  void error(const char* rule, const std::string& key, const std::string& what,
             const std::string& advice) {
    add(Severity::kError, rule, key, key + ' ' + what, advice);
  }
  void warning(const char* rule, const std::string& key, const std::string& what,
               const std::string& advice) {
    add(Severity::kWarning, rule, key, key + ' ' + what, advice);
  }

  void limit(const std::string& key, const std::string& value, int capacity = kDefaultCapacity) {
    if (value.find('\0') != std::string::npos) {
      error("zero-byte", key, "holds a zero byte, which would end it", "leave it out");
    } else if (value.size() > longestValue(capacity)) {
      error("record-limit", key,
            "has " + std::to_string(value.size()) + " bytes; the launcher reads up to " +
                std::to_string(longestValue(capacity)) + " and takes the rest for the next record",
            "shorten it");
    }
  }

  void limits(const std::string& key, const std::vector<std::string>& values) {
    for (const std::string& value : values) {
      limit(key, value);
    }
  }

  void texts() {
    limit("application.main-class", config_.application.mainClass);
    limits("application.arguments", config_.application.arguments);
    limit("updater.main-class", config_.updater.mainClass);
    limit("updater.compatibility-class", config_.updater.compatibilityClass);
    limit("install.silent-switch", config_.install.silentSwitch);
    limit("update.url", config_.update.url, kUpdateUrlCapacity);
    for (const std::string& mirror : config_.update.mirrors) {
      limit("update.mirrors", mirror, kUpdateUrlCapacity);
    }
    if (config_.application.mainClass.empty() ||
        config_.application.mainClass.find('/') != std::string::npos) {
      error("main-class", "application.main-class", "is not the name of a class",
            "write it as in a program, with dots: com.example.Main");
    }
    if (config_.application.jars.empty()) {
      error("no-jars", "application.jars", "is empty: there would be nothing to run",
            "jars = [\"my.jar\"]");
    }
  }

  // Jars of a tree that is packed as it lies stay where they are in it.
  void root() {
    const ApplicationConfig& app = config_.application;
    if (app.root.empty()) {
      return;
    }
    for (const std::string& jar : app.jars) {
      const std::filesystem::path path(jar);
      if (path.is_absolute() || std::find(path.begin(), path.end(), "..") != path.end()) {
        error("root", "application.jars", "has " + jar + ", which is not in application.root",
              "write it as it is called in that folder, or leave out root");
      } else if (path.parent_path().string().find(':') != std::string::npos) {
        error(
            "name-colon", "application.jars",
            "has " + jar + ", whose folder holds a \":\": it separates the entries of a class path",
            "rename the folder");
      }
    }
    if (config_.places.count("application.layout") != 0) {
      warning("no-effect", "application.layout",
              "has no effect here: what lies in application.root is packed as it lies",
              "leave it out");
    }
  }

  void memory() {
    const JvmConfig& jvm = config_.jvm;
    if (jvm.maximumHeap != 0 && jvm.initialHeap > jvm.maximumHeap) {
      error("memory", "jvm.initial-memory-mb",
            "is " + std::to_string(jvm.initialHeap) + ", more than the " +
                std::to_string(jvm.maximumHeap) + " of memory-mb: Java refuses to start so",
            "make it as large as memory-mb or smaller, or leave it out");
    }
  }

  void systemProperties() {
    for (const auto& [name, value] : config_.jvm.systemProperties) {
      const std::string key = "jvm.system-properties." + name;
      limit(key, "-D" + name + '=' + value);
      if (name.empty() || name.find('=') != std::string::npos) {
        error("parameter", key, "is no name of a system property", "give it a name without \"=\"");
      } else if (name.starts_with("quillory.") || name == "java.class.path") {
        error("parameter", key, "is set by the updater", "leave it out");
      }
    }
  }

  void environment() {
    for (const auto& [name, value] : config_.jvm.environment) {
      const std::string key = "jvm.environment." + name;
      limit(key, std::string(kEnvironmentOption) + name + '=' + value);
      const auto isPlain = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
      const bool isName = !name.empty() && std::isdigit(static_cast<unsigned char>(name[0])) == 0 &&
                          std::all_of(name.begin(), name.end(), isPlain);
      if (!isName) {
        error("parameter", key, "is no name of an environment variable",
              "write letters, digits and \"_\", with no digit in front");
      }
    }
  }

  // Without a runtime these say nothing, and the bundle becomes an online installer in silence.
  void runtimeKeys() {
    const RuntimeSource source = config_.runtime.source;
    const auto warnOf = [this](const char* name, const char* advice) {
      const std::string key = std::string("runtime.") + name;
      if (config_.places.count(key) != 0) {
        warning("no-effect", key, "has no effect here", advice);
      }
    };
    if (source != RuntimeSource::kJlink) {
      if (!config_.jvm.options.empty()) {
        warning("no-effect", "jvm.options", "has no effect here: a runtime that jlink makes has it",
                "add jlink = true to [runtime], or leave it out");
      }
      for (const char* name : {"modules", "add-modules", "jlink-options", "jdk", "jmods"}) {
        warnOf(name, "add jlink = true to [runtime], or leave it out");
      }
    }
    const bool hasArchive = source != RuntimeSource::kNone && config_.application.module.empty();
    if (!hasArchive && config_.jvm.hasStartupArchive &&
        config_.places.count("jvm.startup-archive") != 0) {
      warning("no-effect", "jvm.startup-archive",
              "has no effect here: archives are made for packed runtimes and class paths",
              "leave it out");
    }
    classList();
    if (source == RuntimeSource::kNone) {
      warnOf("version", "add jlink = true or folder to [runtime]: no runtime is packed");
    }
  }

  // With another updater than ours the launcher knows nothing of the application when it makes the
  // JVM.
  void ownUpdater() {
    if (config_.updater.jar.empty()) {
      return;
    }
    if (!config_.application.module.empty()) {
      warning(
          "no-effect", "application.module",
          "has no effect here: with updater.jar the JVM is made without the application's modules",
          "write main-class and let your updater load the module, or leave out updater.jar");
    } else if (config_.runtime.source != RuntimeSource::kNone && config_.jvm.hasStartupArchive &&
               config_.places.count("jvm.startup-archive") != 0) {
      warning(
          "no-effect", "jvm.startup-archive",
          "has no effect here: with updater.jar the JVM is made without the application's classes",
          "leave it out, or leave out updater.jar");
    }
  }

  void classList() {
    const RuntimeConfig& runtime = config_.runtime;
    if (runtime.classList.empty()) {
      error("choice", "runtime.class-list", "is empty", "write \"auto\", \"none\" or a file");
    } else if (runtime.source == RuntimeSource::kNone &&
               config_.places.count("runtime.class-list") != 0) {
      warning("no-effect", "runtime.class-list",
              "has no effect here: it is for a runtime that is packed",
              "add jlink = true or folder to [runtime], or leave it out");
    }
  }

  void output() {
    if (config_.bundle.output.empty()) {
      error("name", "bundle.output", "is empty", "output = \"dist\"");
    }
  }

  void runtimeSource() {
    if (config_.runtime.source == RuntimeSource::kNone &&
        config_.update.urlKind == UpdateUrlKind::kOff) {
      warning("no-runtime", "runtime",
              "is missing and updates are off: the application starts only where a Java runtime "
              "that fits is installed",
              "[runtime] with jlink = true, or [update] with a URL to download a runtime from");
    }
  }

  void updateUrl() {
    const UpdateConfig& update = config_.update;
    if (update.urlKind == UpdateUrlKind::kOff) {
      return;
    }
    if (update.url.empty()) {
      warning("update-url", "update.url",
              "is missing, and the URL is dynamic: there are no updates before somebody sets one",
              "url = \"https://example.com/updates/\", or later: quillory-pack set BUNDLE "
              "update_url=https://...");
    } else if (update.url == kDynamicUpdateUrl) {
      error("update-url", "update.url", "is \"D\", which stands for a dynamic URL",
            "write dynamic = true");
    } else if (const auto flaw = flawOfUpdateUrl(subject("update.url"), update.url)) {
      findings_.push_back(*flaw);
    } else if (update.url.starts_with("http://")) {
      warning("plain-http", "update.url",
              "is plain http: anybody on the way can see and hold back what is downloaded",
              "use https://");
    }
  }

  void urlSchemes() {
    for (const std::string& scheme : config_.application.urlSchemes) {
      const bool valid = !scheme.empty() && std::isalpha(static_cast<unsigned char>(scheme[0])) &&
                         std::all_of(scheme.begin(), scheme.end(), [](unsigned char c) {
                           return std::isalnum(c) || c == '+' || c == '-' || c == '.';
                         });
      if (!valid) {
        error("url-scheme", "application.url-schemes",
              "has \"" + scheme + "\", which is not the part of a URL before the colon",
              "use a letter, then letters and digits: url-schemes = [\"myapp\"]");
      }
    }
  }

  // An identifier of macOS and a media type of Linux are made of the first one.
  void documents() {
    constexpr std::size_t kLongest = 32;
    std::set<std::string> seen;
    for (const DocumentConfig& document : config_.documents) {
      const Place place{config_.file, document.line};
      for (const std::string& extension : document.extensions) {
        const bool isValid = !extension.empty() && extension.size() <= kLongest &&
                             std::all_of(extension.begin(), extension.end(), [](unsigned char c) {
                               return (c < 0x80 && std::isalnum(c)) || c == '-';
                             });
        if (!isValid) {
          findings_.push_back(
              {Severity::kError, "extension",
               "documents.extensions has \"" + extension + "\", which is no extension of files",
               place, "write letters and digits, without the dot"});
        } else if (!seen.insert(extension).second) {
          findings_.push_back({Severity::kError, "extension",
                               "." + extension + " stands in [[documents]] twice", place,
                               "keep one of the two"});
        }
      }
      if (document.extensions.empty() || document.name.empty()) {
        findings_.push_back({Severity::kError, "missing-key",
                             "[[documents]] without a name or an extension", place,
                             "name = \"Letter\" and extensions = [\"letter\"]"});
      }
    }
  }

  void runtimeVersion() {
    const std::string& version = config_.runtime.version;
    if (version.size() > kLongestRuntimeVersion) {
      error("record-limit", "runtime.version", "has more than 50 characters", "shorten it");
    } else if (!std::all_of(version.begin(), version.end(),
                            [](unsigned char c) { return std::isdigit(c); })) {
      error("version", "runtime.version",
            "is not a whole number: the launcher compares versions as numbers",
            "version = 17, or leave it out to take the one of the runtime");
    }
  }

  void parameters() {
    for (const auto& [name, value] : config_.parameters) {
      const std::string key = "parameters." + name;
      limit(key, name);
      limit(key, value, kParamValueCapacity);
      if (name == "update_url" || name == "jre_name") {
        error("parameter", key, "is written by other keys of this file",
              name == "jre_name" ? "use runtime.name" : "use dynamic = true and url in [update]");
      } else if (name == "hardened") {
        error("parameter", key, "is written by another key of this file",
              "use hardened in [install]");
      } else if (name == "force_spawn" && config_.places.count("jvm.force-spawn") != 0) {
        error("parameter", key, "is written by jvm.force-spawn as well", "keep one of the two");
      } else if (const auto flaw = flawOfParameter(subject(key), name, value)) {
        findings_.push_back(*flaw);
      }
    }
  }

  void signing() { limit("signing.key", config_.signing.key); }

  Subject subject(const std::string& key) const { return {key, config_.placeOf(key)}; }

  const Config& config_;
  Findings findings_;
};

}  // namespace

Findings lintConfig(const Config& config) { return Linter(config).run(); }

}  // namespace quillory::pack
