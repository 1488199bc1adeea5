#include "packager/commands/strict_check.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include "formats/markers.h"
#include "formats/params_format.h"
#include "formats/tail_format.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/content/bundle_tools.h"
#include "packager/content/info_plist.h"
#include "packager/reading/target.h"
#include "packager/writing/tail_writer.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr char kSignatureFolder[] = "_CodeSignature";

class StrictCheck {
 public:
  StrictCheck(const BundleView& bundle, Findings& findings)
      : bundle_(bundle), findings_(findings) {}

  void run() {
    if (!isFile(bundle_.executable)) {
      return;  // that is a finding already
    }
    target_ = targetNamed(targetNameOf(programImageIn(bundle_.executable)));
    checkExecutable();
    checkTools();
    checkElevation();
    checkInfoPlist();
    checkFiles();
  }

 private:
  void add(const std::string& what, const std::string& file, const std::string& advice) {
    findings_.push_back({Severity::kError, "not-ours", what, {file, 0}, advice});
  }

  // The path of the program that we would pack; "" with a finding when we have none.
  std::string ownProgram(const char* name, const std::string& file) {
    const std::string path = target_ ? ownProgramFor(*target_, name) : "";
    if (path.empty()) {
      add(std::string("there is no ") + name + " of our own to compare it with", file,
          "check it with the quillory-pack that made it, where the programs for its system are");
    }
    return path;
  }

  void compare(const char* name, const std::string& bytes, const std::string& file) {
    const std::string own = ownProgram(name, file);
    if (!own.empty() && bytes != readWholeFile(own)) {
      add(std::string(name) + " is not the one that this program packs", file,
          "check it with the quillory-pack that made it; code signing changes programs, too");
    }
  }

  void checkExecutable() {
    const std::string bytes = readWholeFile(bundle_.executable);
    if (!bundle_.tail || !bundle_.tail->inExecutable) {
      compare("launcher", bytes, bundle_.executable);
      return;
    }
    const std::string own = ownProgram("launcher", bundle_.executable);
    if (!own.empty() &&
        !bytes.starts_with(readWholeFile(own) + guardBeforeMarker(own) + tailMarker())) {
      add("launcher is not the one that this program packs", bundle_.executable,
          "check it with the quillory-pack that made it");
    }
  }

  void checkTools() {
    if (!bundle_.tail) {
      return;
    }
    for (std::size_t i = 0; i < kCompressions.size() && i < bundle_.tail->entries.size(); ++i) {
      std::string bytes;
      readRegion(bundle_.tail->regionOf(bundle_.tail->entries[i]),
                 [&bytes](std::string_view block) { bytes += block; });
      compare(kCompressions[i].tool, bytes, bundle_.tail->file);
    }
  }

  void checkElevation() {
    const std::string file = bundle_.inside("Resources/elev_mac");
    if (isFile(file)) {
      compare("elev_mac", readWholeFile(file), file);
    }
  }

  void checkInfoPlist() {
    const std::string file = bundle_.inside("Info.plist");
    if (!isApplicationInfoPlist(bundle_.infoPlist)) {
      add("Info.plist is not as this program writes it", file,
          "look for keys that were added, such as LSEnvironment");
    } else if (bundle_.tail &&
               (plistText(bundle_.infoPlist, "CFBundleName") != bundle_.tail->records.appName ||
                plistText(bundle_.infoPlist, "CFBundleVersion") !=
                    bundle_.tail->records.appVersion)) {
      add("Info.plist names another application or version than the tail", file, "");
    }
  }

  void checkFiles() {
    const std::string resources = "Resources/";
    std::set<std::string> known = {
        "Info.plist",
        "MacOS/" + fs::path(bundle_.executable).filename().string(),
        resources + kParamsFileName,
        resources + kLocalizedParamsFolder + '/' + kLocalizedParamsFileName,
        resources + "elev_mac",
        resources + plistText(bundle_.infoPlist, "CFBundleIconFile"),
        bundle_.tail && bundle_.tail->inExecutable ? "" : resources + kTailFileName};
    for (const std::string& icon : documentIconsIn(bundle_.infoPlist)) {
      known.insert(resources + icon);
    }
    const fs::path contents = bundle_.inside("");
    for (auto entry = fs::recursive_directory_iterator(contents); entry != fs::end(entry);
         ++entry) {
      const std::string inside = entry->path().lexically_relative(contents).string();
      if (inside == kSignatureFolder) {
        entry.disable_recursion_pending();
      } else if (entry->is_symlink() || (!entry->is_directory() && !known.contains(inside))) {
        add("no bundle of ours has such a file", entry->path().string(), "remove it");
      }
    }
    for (const auto& entry : fs::directory_iterator(bundle_.folder)) {
      if (entry.path().filename() != "Contents") {
        add("no bundle of ours has such a file", entry.path().string(), "remove it");
      }
    }
  }

  const BundleView& bundle_;
  Findings& findings_;
  std::optional<Target> target_;
};

}  // namespace

void checkStrictly(const BundleView& bundle, Findings& findings) {
  StrictCheck(bundle, findings).run();
}

}  // namespace quillory::pack
