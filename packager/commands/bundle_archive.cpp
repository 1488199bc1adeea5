#include "packager/commands/bundle_archive.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <vector>

#include "packager/content/desktop_files.h"
#include "packager/writing/packed_folder.h"

namespace quillory::pack {
namespace {

constexpr unsigned kScriptMode = 0755;

// A display version may be anything; a file's name may not.
std::string asFileName(std::string text) {
  std::replace(text.begin(), text.end(), '/', '_');
  return text;
}

}  // namespace

std::string writeBundleArchive(const Config& config, const std::string& bundle, Target target,
                               const std::string& folder) {
  const ApplicationConfig& app = config.application;
  const std::string inside = std::filesystem::path(bundle).filename().string();
  const std::string name = asFileName(app.name + '-' + app.displayVersion);
  const std::string output = folder + '/' + name + '-' + nameOf(target);
  if (target == Target::kMacOS) {
    writePackedFolder(PackedFormat::kZip, {{inside, bundle}}, output + ".zip");
    return output + ".zip";
  }
  std::optional<DesktopIcon> icon;
  if (!app.icon.empty()) {
    icon = desktopIconFrom(config.resolve(app.icon));
  }
  std::vector<PackedEntry> entries = {
      {name + '/' + inside, bundle},
      {name + '/' + app.identifier + ".desktop", "", desktopEntry(config, icon.has_value())}};
  if (icon) {
    entries.push_back({name + '/' + app.identifier + ".png", "", icon->png});
  }
  if (!config.documents.empty()) {
    entries.push_back({name + '/' + app.identifier + ".xml", "",
                       mediaTypePackage(app.identifier, config.documents)});
  }
  entries.push_back(
      {name + "/install.sh", "", installScript(app, icon ? icon->pixels : 0), kScriptMode});
  writePackedFolder(PackedFormat::kTarXz, entries, output + ".tar.xz");
  return output + ".tar.xz";
}

}  // namespace quillory::pack
