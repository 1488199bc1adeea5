#include "packager/commands/bundle_assembly.h"

#include <algorithm>
#include <filesystem>

#include "formats/markers.h"
#include "formats/params_format.h"
#include "formats/tail_format.h"
#include "formats/update_url.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/commands/release_files.h"
#include "packager/content/icns.h"
#include "packager/content/info_plist.h"
#include "packager/writing/params_writer.h"
#include "packager/writing/tail_writer.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kExecutable = 0777;  // less the umask
constexpr unsigned kPlain = 0666;
// With the folder around it, before that gets its name.
constexpr Durability kFlushedLater = Durability::kLeftToTheSystem;

TailRecords tailRecords(const Config& config, const PackedParts& parts,
                        const std::string& publicKey) {
  TailRecords records;
  records.appName = parts.application.name;
  if (!config.bundle.isOnline) {
    records.appVersion = parts.application.version;
    records.jreVersion = parts.runtime ? parts.runtime->version : "";
  }
  records.guVersion = parts.updater.version;
  records.minSplashMs = std::to_string(config.application.minSplashMillis);
  records.signaturePublicKey = publicKey;
  records.canOverrideSplash = config.application.splashOverride ? "1" : "0";
  records.installType = config.install.type;
  records.silentParameter = config.install.silentSwitch;
  records.requiredJavaVersion =
      config.install.requiredJava == 0 ? "" : std::to_string(config.install.requiredJava);
  records.updateUrl =
      config.update.urlKind == UpdateUrlKind::kDynamic ? kDynamicUpdateUrl : config.update.url;
  return records;
}

// "" stays "": nothing is named.
std::string resolved(const Config& config, const std::string& named) {
  return named.empty() ? "" : config.resolve(named);
}

void writeTail(ByteSink& sink, const Config& config, const BundleTools& tools,
               const PackedParts& parts, const std::string& publicKey) {
  writeTailRecords(sink, tailRecords(config, parts, publicKey));
  for (std::size_t i = 0; i < kCompressions.size(); ++i)
    writeTailEntry(sink, {kCompressions[i].tool, tools.decompressors[i]});
  writeTailEntry(sink, {kSplashPictureName, resolved(config, config.application.splash)});
  writeTailEntry(sink, {kTrustStoreName, resolved(config, config.updater.cacerts)});
  writeTailEntry(sink, {"verpatch.exe", ""});
  writeTailEntry(sink, {packedArchiveName(kUpdaterPart), parts.updater.archive});
  if (config.bundle.isOnline) {
    return;
  }
  if (parts.runtime) {
    writeTailEntry(sink, {packedArchiveName(kJrePart), parts.runtime->archive});
  }
  writeTailEntry(sink, {packedArchiveName(kApplicationPart), parts.application.archive});
  // The launcher reads two entries for the application; the second one is a leftover that the
  // format keeps.
  writeTailEntry(sink, {"App2", ""});
}

Parameters parametersOf(const Config& config, bool isHardened) {
  Parameters all = {{"jre_name", config.runtime.name}};
  if (config.update.urlKind == UpdateUrlKind::kDynamic && !config.update.url.empty()) {
    all.emplace_back("update_url", config.update.url);
  }
  if (config.jvm.forceSpawn) {
    all.emplace_back("force_spawn", "true");
  }
  if (isHardened) {
    all.emplace_back("hardened", "true");
  }
  // Who wants it otherwise writes the parameter himself.
  const auto isGiven = [&](const std::string& name) {
    return std::ranges::any_of(config.parameters,
                               [&](const auto& parameter) { return parameter.first == name; });
  };
  if (!isGiven("error_dialog")) {
    all.emplace_back("error_dialog", "true");
  }
  all.insert(all.end(), config.parameters.begin(), config.parameters.end());
  return all;
}

void writeParametersFile(const std::string& path, const Config& config, bool isHardened) {
  FileSink params(path, kPlain, kFlushedLater);
  writeParameters(params, parametersOf(config, isHardened));
  params.commit();
}

// The system's seal of a signed bundle leaves out one kind of file only, so that parameters which
// stand there can be changed afterwards.
std::string parametersPlace(const std::string& resources, Target target) {
  if (target == Target::kLinux) {
    return resources + kParamsFileName;
  }
  fs::create_directories(resources + kLocalizedParamsFolder);
  return resources + kLocalizedParamsFolder + '/' + kLocalizedParamsFileName;
}

// The newer Macs' own first: what is for both runs best there.
std::vector<std::string> nativeFirst(std::vector<std::string> architectures) {
  std::stable_partition(architectures.begin(), architectures.end(),
                        [](const std::string& name) { return name == "arm64"; });
  return architectures;
}

// Puts the icons of documents into `resources`, of a bundle for macOS.
std::string infoPlistOf(const Config& config, Target target, const PackedParts& parts,
                        const std::string& icon, const std::string& resources) {
  if (target != Target::kMacOS) {
    return applicationInfoPlist(config.application, icon);
  }
  MacPlist mac = macPlistOf(config);
  mac.architectures = nativeFirst(parts.runtimeArchitectures);
  for (DocumentConfig& document : mac.documents) {
    if (document.icon.empty()) {
      continue;
    }
    const std::string name =
        config.application.executable + '-' + document.extensions.front() + ".icns";
    writeWholeFile(resources + name, icnsFrom(config.resolve(document.icon)), kPlain,
                   kFlushedLater);
    document.icon = name;
  }
  return applicationInfoPlist(config.application, icon, mac);
}

// Returns its name in `resources`; "" when the configuration names none.
std::string writeIcon(const Config& config, const std::string& resources) {
  const std::string& icon = config.application.icon;
  if (icon.empty()) {
    return "";
  }
  const std::string name = config.application.executable + ".icns";
  writeWholeFile(resources + name, icnsFrom(config.resolve(icon)), kPlain, kFlushedLater);
  return name;
}

void addReleaseOf(const PackedPart& part, const std::string& folder) {
  addRelease(folder, part.name, part.version, part.archive);
}

}  // namespace

MadeFiles assembleBundle(const Config& config, const BundleTools& tools, const PackedParts& parts,
                         const std::string& publicKey, const std::string& workFolder) {
  const MadeFiles made{workFolder + "/app", workFolder + "/release"};
  const std::string contents = made.bundle + "/Contents/";
  const std::string resources = contents + "Resources/";
  fs::create_directories(contents + "MacOS");
  fs::create_directories(resources);
  FileSink executable(contents + "MacOS/" + config.application.executable, kExecutable,
                      kFlushedLater);
  copyFileInto(executable, tools.launcher);
  if (config.bundle.tail == TailPlace::kExecutable) {
    executable.write(guardBeforeMarker(tools.launcher));
    executable.write(tailMarker());
    writeTail(executable, config, tools, parts, publicKey);
  }
  executable.commit();
  if (config.bundle.tail == TailPlace::kFile) {
    FileSink tail(resources + kTailFileName, kPlain, kFlushedLater);
    writeTail(tail, config, tools, parts, publicKey);
    tail.commit();
  }
  writeParametersFile(parametersPlace(resources, tools.target), config, parts.isHardened);
  const std::string icon = writeIcon(config, resources);
  writeWholeFile(contents + "Info.plist", infoPlistOf(config, tools.target, parts, icon, resources),
                 kPlain, kFlushedLater);
  if (!tools.elevMac.empty()) {
    writeWholeFile(resources + "elev_mac", readWholeFile(tools.elevMac), kExecutable,
                   kFlushedLater);
  }
  addReleaseOf(parts.updater, made.release);
  addReleaseOf(parts.application, made.release);
  if (parts.runtime) {
    addReleaseOf(*parts.runtime, made.release);
  }
  return made;
}

}  // namespace quillory::pack
