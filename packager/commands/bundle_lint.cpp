#include "packager/commands/bundle_lint.h"

#include <filesystem>
#include <optional>

#include "formats/tail_format.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/commands/named_jar.h"
#include "packager/content/icns.h"
#include "packager/content/info_plist.h"
#include "packager/content/runtime_options.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

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
                 std::optional<Finding> (*flawOf)(const Subject&, std::string_view),
                 Findings& findings) {
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
  if (const std::optional<Finding> flaw = flawOf({path, place}, readWholeFile(path))) {
    findings.push_back(*flaw);
  }
}

// What lies in a folder that is packed as a whole, and must not travel with it.
void lintStrays(const Config& config, const ContentTree& tree, const std::string& outputFolder,
                Findings& findings) {
  const std::string key =
      config.signing.key.empty() ? "" : tree.sourceOf(config.resolve(config.signing.key));
  if (!key.empty()) {
    findings.push_back({Severity::kError,
                        "key-packed",
                        "the key that signs would be in the " + tree.name() +
                            ", where everybody can take it and sign with it",
                        {key, 0},
                        "keep it outside of the folders that are packed"});
  }
  const std::string output = tree.sourceOf(outputFolder);
  if (!output.empty()) {
    findings.push_back({Severity::kError,
                        "output-packed",
                        "the folder for the results would be in the " + tree.name() +
                            ", with the unfinished work and all that earlier runs made",
                        {output, 0},
                        "name another folder with bundle.output, or pack less"});
  }
}

// What `java -jar` would do for the application by its manifest, and the runtime cannot.
void lintManifest(const Config& config, const std::string& path, const Jar& mainJar,
                  Findings& findings) {
  if (config.runtime.source != RuntimeSource::kJlink && !manifestOptions(mainJar).empty()) {
    findings.push_back({Severity::kWarning,
                        "no-effect",
                        "the manifest asks for packages or native access that Java opens for "
                        "java -jar; here a runtime that jlink makes does it",
                        {path, 0},
                        "add jlink = true to [runtime], or see that the runtime opens them"});
  }
}

}  // namespace

Findings lintFiles(const Config& config, const std::vector<std::string>& jars) {
  Findings findings;
  bool hasMainClass = false;
  for (const std::string& path : jars) {
    if (fs::path(path).filename().string().find(':') != std::string::npos) {
      findings.push_back({Severity::kError,
                          "name-colon",
                          "a jar's name holds a \":\", which separates the entries of a class path",
                          {path, 0},
                          "rename it"});
    }
    const std::optional<Jar> jar = namedJar(path, config.placeOf("application.jars"), findings);
    const bool isMain = jar && !hasMainClass && jar->hasClass(config.application.mainClass);
    if (isMain) {
      lintManifest(config, path, *jar, findings);
    }
    // Nobody knows what is in a damaged one.
    hasMainClass = !jar || isMain || hasMainClass;
  }
  if (!hasMainClass) {
    findings.push_back({Severity::kError, "main-class",
                        "no jar has the class " + config.application.mainClass,
                        config.placeOf("application.main-class"),
                        "write its full name, and see that its jar is in application.jars"});
  }
  lintExtraFiles(config, findings);
  lintPicture(config, "application.splash", config.application.splash, flawOfPicture, findings);
  lintPicture(config, "application.icon", config.application.icon, flawOfIcon, findings);
  for (const DocumentConfig& document : config.documents) {
    lintPicture(config, "documents.icon", document.icon, flawOfIcon, findings);
  }
  if (!config.updater.cacerts.empty() && !isFile(config.resolve(config.updater.cacerts))) {
    findings.push_back({Severity::kError, "missing-file",
                        "there is no file " + config.resolve(config.updater.cacerts),
                        config.placeOf("updater.cacerts"),
                        "correct the name, or leave out updater.cacerts"});
  }
  return findings;
}

Findings lintMacPlist(const Config& config) {
  Findings findings;
  for (const auto& [key, value] : config.macos.plist) {
    const std::string name = "macos.plist." + key;
    if (key.empty() || isKeyOfOurs(key)) {
      findings.push_back({Severity::kError, "parameter", name + " is written by other keys",
                          config.placeOf("macos.plist"), "leave it out"});
    }
  }
  if (macPlistOf(config).mayAskAnyHost) {
    findings.push_back({Severity::kWarning, "plain-http",
                        "update.url is dynamic: macOS lets the launcher ask every server without "
                        "encryption, as nobody knows yet which it will be",
                        config.placeOf("update.url"), "begin with a URL that has https://"});
  }
  return findings;
}

Findings lintApplicationPaths(const ContentTree& application) {
  Findings findings;
  for (const std::string& name :
       {archiveName(kApplicationPart), packedArchiveName(kApplicationPart)}) {
    if (application.contains(name)) {
      findings.push_back(
          {Severity::kError,
           "path-taken",
           "\"" + name +
               "\" of the application is where the archive itself is put while it is "
               "extracted",
           {application.entries().at(name).source, 0},
           "rename it"});
    }
  }
  return findings;
}

Findings lintParts(const Config& config, const BundleParts& parts, const std::string& output) {
  Findings findings = lintApplicationPaths(parts.application.content);
  for (const BundlePart* part :
       {&parts.updater, &parts.application, parts.runtime ? &*parts.runtime : nullptr}) {
    if (part != nullptr) {
      append(findings, part->content.check());
      lintStrays(config, part->content, output, findings);
    }
  }
  return findings;
}

}  // namespace quillory::pack
