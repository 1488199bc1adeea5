#include "packager/config/config_names.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "install/version_folders.h"
#include "packager/config/name_rules.h"

namespace quillory::pack {
namespace {

// Stands for the version of a runtime that is not known yet; none is longer in practice.
constexpr char kSomeRuntimeVersion[] = "999999999999";

class NameLinter {
 public:
  explicit NameLinter(const Config& config) : config_(config) {}

  Findings run() {
    missingIdentifier();
    const std::string& runtimeVersion = config_.runtime.version;
    folderName("application.name", config_.application.name,
               std::to_string(config_.application.version));
    folderName("runtime.name", config_.runtime.name,
               runtimeVersion.empty() ? kSomeRuntimeVersion : runtimeVersion);
    takenNames();
    if (const auto flaw = flawOfExecutableName(subject("application.executable"),
                                               config_.application.executable)) {
      findings_.push_back(*flaw);
    }
    identifier();
    return std::move(findings_);
  }

 private:
  void add(Severity severity, const char* rule, const std::string& key, const std::string& what,
           const std::string& advice) {
    findings_.push_back({severity, rule, key + ' ' + what, config_.placeOf(key), advice});
  }
  Subject subject(const std::string& key) const { return {key, config_.placeOf(key)}; }

  static bool isUsable(const std::string& key, const std::string& name,
                       const std::string& version) {
    return key == "runtime.name" ? isUsableAsJre(name, version)
                                 : isUsableInFolderName(name, version);
  }

  // Rules for what becomes part of a version folder's name.
  void folderName(const std::string& key, const std::string& name, const std::string& version) {
    if (const auto flaw = flawOfFolderName(subject(key), name)) {
      findings_.push_back(*flaw);
    } else if (!isUsable(key, name, version)) {
      add(Severity::kError, "record-limit", key,
          "is too long: with its version, the folders named after it would have names of more "
          "than 255 bytes",
          "shorten it");
    } else if (name.find_first_of("\"$`\\") != std::string::npos) {
      add(Severity::kWarning, "name-quote", key,
          "holds one of \" $ ` \\, which people cannot type into a terminal as they are",
          "leave it out");
    }
  }

  // On a disk that ignores the case, as macOS has it, "quillory" is the updater's folder too.
  void takenNames() {
    const std::string& app = config_.application.name;
    const std::string& runtime = config_.runtime.name;
    if (isSameOnDisk(app, kUpdaterName)) {
      add(Severity::kError, "name-taken", "application.name",
          "is \"Quillory\", the name of the updater's folders", "choose another name");
    }
    const bool isUpdaters = isSameOnDisk(runtime, kUpdaterName);
    if (isUpdaters || isSameOnDisk(runtime, app)) {
      add(Severity::kError, "name-taken", "runtime.name",
          "is the name of the " + std::string(isUpdaters ? "updater" : "application") +
              ", whose folders would be taken for the runtime's",
          "choose another name, such as \"JRE\"");
    }
    if (isSameOnDisk(app, "java") || isSameOnDisk(app, "keytool")) {
      add(Severity::kError, "name-taken", "application.name",
          "is the name of a tool in the runtime, where a copy of java gets the application's name",
          "choose another name");
    }
  }

  void missingIdentifier() {
    if (config_.filledIn.count("application.identifier") != 0) {
      add(Severity::kWarning, "identifier", "application.identifier",
          "is missing; \"" + config_.application.identifier +
              "\" is used, which another application may have",
          "identifier = \"com.example.myapplication\", from a domain that you own");
    }
  }

  // What macOS takes for one. The one that is made when none is given has its own warning.
  void identifier() {
    const std::string& identifier = config_.application.identifier;
    const bool isGiven = config_.places.count("application.identifier") != 0;
    const bool isPlain = std::all_of(identifier.begin(), identifier.end(), [](unsigned char c) {
      return std::isalnum(c) || c == '.' || c == '-';
    });
    if (isGiven && !isPlain) {
      add(Severity::kWarning, "identifier", "application.identifier",
          "has other characters than letters, digits, dots and dashes, which macOS may not take",
          "identifier = \"com.example.myapplication\", from a domain that you own");
    }
  }

  const Config& config_;
  Findings findings_;
};

}  // namespace

Findings lintNames(const Config& config) { return NameLinter(config).run(); }

}  // namespace quillory::pack
