#include "packager/content/bundle_tools.h"

#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

#include "formats/markers.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/content/program_folder.h"
#include "packager/reading/record_input.h"
#include "packager/report/joined.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr char kUpdaterJarName[] = "updater.jar";

// A program for the bundle, and the key that names another one.
struct Wanted {
  const char* name;
  std::string key;
  const std::string& configured;
  std::string& path;
};

std::string beside(const char* folder) {
  return (fs::path(programFolder()) / folder).lexically_normal().string();
}

// An installation has those for its own system in share, which nobody else writes to; in the folder
// of a build they lie beside this program. Those for another system are in a folder of that one's
// name: in the build tree, next to the build that this program is from, or installed.
std::vector<std::string> foldersFor(Target target) {
  if (target == nativeTarget()) {
    return {beside("../share/quillory"), beside(".")};
  }
  return {beside(("../../" + nameOf(target) + "/bin").c_str()),
          beside(("../share/quillory/" + nameOf(target)).c_str())};
}

std::string firstFile(const std::vector<std::string>& folders, const std::string& name) {
  for (const std::string& folder : folders) {
    const std::string path = (fs::path(folder) / name).string();
    if (isFile(path)) {
      return path;
    }
  }
  return "";
}

std::string configuredFile(const Config& config, const std::string& key,
                           const std::string& configured) {
  const std::string path = config.resolve(configured);
  if (!isFile(path)) {
    throw RejectedInput(
        {{Severity::kError, "missing-file", "there is no file " + path, config.placeOf(key),
          "build it, or correct the name; without " + key +
              " the one that comes with us is taken"}});
  }
  return path;
}

// For files that are the same for all systems.
std::vector<std::string> foldersOfFiles() { return {beside("../share/quillory"), beside(".")}; }

std::string findUpdaterJar(const Config& config) {
  if (!config.updater.jar.empty()) {
    return configuredFile(config, "updater.jar", config.updater.jar);
  }
  const std::vector<std::string> folders = foldersOfFiles();
  const std::string found = firstFile(folders, kUpdaterJarName);
  if (found.empty()) {
    throw PackError(
        std::string("there is no ") + kUpdaterJarName + " in " + joined(folders, " or "),
        "build it, or name it with updater.jar");
  }
  return found;
}

// All that is missing at once, and where it was looked for.
[[noreturn]] void throwMissing(Target target, const std::vector<std::string>& names,
                               const std::vector<std::string>& keys) {
  const bool hasScript = target == Target::kMacOS && target != nativeTarget();
  throw PackError("for " + std::string(systemOf(target)) + " there is no " + joined(names, ", ") +
                      " in " + joined(foldersFor(target), " or "),
                  (hasScript ? "scripts/build-macos.sh makes them; " : "build them; ") +
                      std::string("files elsewhere are named with ") + joined(keys, ", "));
}

void findAll(const Config& config, Target target, const std::vector<Wanted>& all) {
  std::vector<std::string> missing, keys;
  for (const Wanted& wanted : all) {
    if (!wanted.configured.empty()) {
      wanted.path = configuredFile(config, wanted.key, wanted.configured);
      continue;
    }
    wanted.path = firstFile(foldersFor(target), wanted.name);
    // Without an elevation tool a bundle installs for one user all the same; the one of this system
    // may not have been built. Programs of another system come as a set.
    const bool required = target != nativeTarget() || wanted.name != std::string("elev_mac");
    if (wanted.path.empty() && required) {
      missing.push_back(wanted.name);
      keys.push_back(wanted.key);
    }
  }
  if (!missing.empty()) {
    throwMissing(target, missing, keys);
  }
}

void checkSystem(const Config& config, Target target, const Wanted& wanted, Findings& findings) {
  if (wanted.path.empty()) {
    return;
  }
  const bool isNamed = !wanted.configured.empty();
  const ProgramImage image = programImageIn(wanted.path);
  const Place place = isNamed ? config.placeOf(wanted.key) : Place{};
  std::optional<Finding> flaw = unfitFor(target, {wanted.path, place}, image);
  if (!flaw) {
    return;
  }
  flaw->advice = isNamed && !image.system.empty()
                     ? "--target says what the bundle is for, and without " + wanted.key +
                           " the program for it is taken"
                     : "build it again";
  findings.push_back(std::move(*flaw));
}

// The launcher reads the first tail that it finds in itself.
void checkMarker(const Config& config, const std::string& launcher, Findings& findings) {
  if (RecordInput(launcher, findings).findMarker(tailMarker())) {
    findings.push_back({Severity::kError, "tail-marker",
                        launcher + " holds a tail already, which it would read instead of this one",
                        config.placeOf("bundle.launcher"),
                        "take the launcher as it was built, not one out of a bundle"});
  }
}

}  // namespace

std::string ownProgramFor(Target target, const std::string& name) {
  return firstFile(foldersFor(target), name);
}

std::string ownFile(const std::string& name) { return firstFile(foldersOfFiles(), name); }

BundleTools findBundleTools(const Config& config, Target target) {
  BundleTools tools;
  tools.target = target;
  std::vector<Wanted> all = {
      {"launcher", "bundle.launcher", config.bundle.launcher, tools.launcher}};
  for (std::size_t i = 0; i < kCompressions.size(); ++i) {
    const char* tool = kCompressions[i].tool;
    all.push_back({tool, std::string("bundle.") + tool, config.bundle.decompressors[i],
                   tools.decompressors[i]});
  }
  all.push_back({"elev_mac", "bundle.elev-mac", config.bundle.elevMac, tools.elevMac});
  if (config.update.hasClient) {
    all.push_back({kUpdateProgramName, "bundle.quillory-update", config.bundle.updateProgram,
                   tools.updateProgram});
    all.push_back({kUpdateWindowName, "bundle.quillory-update-window", config.bundle.updateWindow,
                   tools.updateWindow});
  }
  findAll(config, target, all);
  Findings findings;
  for (const Wanted& wanted : all) {
    checkSystem(config, target, wanted, findings);
  }
  checkMarker(config, tools.launcher, findings);
  if (hasErrors(findings)) {
    throw RejectedInput(std::move(findings));
  }
  tools.updaterJar = findUpdaterJar(config);
  return tools;
}

}  // namespace quillory::pack
