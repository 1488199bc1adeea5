#include "update/plan.h"

#include <algorithm>

#include "install/version_folders.h"
#include "java/jre_bundle.h"
#include "support/files.h"
#include "support/log.h"
#include "support/paths.h"
#include "update/staged.h"

namespace quillory::update {
namespace {

const std::vector<InstalledVersion>& installedOf(const Inventory& inventory,
                                                 const std::string& role) {
  if (role == kUpdaterRole) return inventory.updaters;
  return role == kRuntimeRole ? inventory.runtimes : inventory.applications;
}

std::string folderNameOf(const ReleaseComponent& component) {
  const std::string path = versionFolder("", component.name, component.version);
  return path.substr(path.rfind('/') + 1);
}

// The name under which the component's folders are looked for here.
std::string expectedName(const Installation& installation, const std::string& role) {
  if (role == kUpdaterRole) return kUpdaterName;
  return role == kRuntimeRole ? installation.jreName : installation.appName;
}

bool isThere(const Installation& installation, const std::string& folder) {
  return isFolder(joinPath(installation.masterFolder, folder));
}

bool isNeeded(const ReleaseComponent& component, const ReleaseList& list,
              const Inventory& inventory) {
  const long wanted = numberOf(component.version);
  if (component.role == kApplicationRole) {
    const InstalledVersion* const started = startedVersion(list, inventory);
    return started == nullptr || started->number < wanted;
  }
  const std::vector<InstalledVersion>& installed = installedOf(inventory, component.role);
  return installed.empty() || installed.front().number < wanted;
}

std::optional<DeltaRoad> roadOf(const ReleaseComponent& component, const Inventory& inventory) {
  const bool isRuntime = component.role == kRuntimeRole;
  std::optional<DeltaRoad> shortest;
  for (const InstalledVersion& base : installedOf(inventory, component.role)) {
    for (const ReleaseDelta& delta : component.deltas) {
      if (delta.baseVersion != base.version || delta.file.length >= component.archive.length)
        continue;
      // What a launcher has installed nobody has written down: the delta itself looks at each file.
      if (!base.archiveSha256.empty() && base.archiveSha256 != delta.baseSha256) continue;
      if (shortest && shortest->delta.file.length <= delta.file.length) continue;
      shortest = isRuntime ? DeltaRoad{delta, base.folder + kBundleSuffix, base.folder}
                           : DeltaRoad{delta, base.folder, ""};
    }
  }
  return shortest;
}

bool isApplicationBlocked(const ReleaseList& list, const Inventory& inventory) {
  const ReleaseComponent* const application = componentOf(list, kApplicationRole);
  return application != nullptr &&
         isBlocked(inventory.trials, folderNameOf(*application), application->plainSha256);
}

}  // namespace

std::int64_t PlannedComponent::size() const {
  if (isStaged) return 0;
  return road ? road->delta.file.length : component.archive.length;
}

bool Plan::isStaged() const {
  return !components.empty() && std::all_of(components.begin(), components.end(),
                                            [](const auto& planned) { return planned.isStaged; });
}

std::int64_t Plan::size() const {
  std::int64_t sum = 0;
  for (const PlannedComponent& planned : components) sum += planned.size();
  return sum;
}

std::int64_t Plan::room() const {
  std::int64_t sum = 0;
  std::int64_t largestArchive = 0;
  for (const PlannedComponent& planned : components) {
    if (planned.isStaged) continue;
    sum += planned.size() + planned.component.installedLength;
    largestArchive = std::max(largestArchive, planned.component.plainLength);
  }
  return sum + largestArchive;  // An archive goes before the next one comes.
}

Inventory takeInventory(const Installation& installation) {
  return {applicationVersions(installation), runtimeVersions(installation),
          updaterVersions(installation), readTrials(installation.updatesFolder())};
}

bool isWithdrawn(const ReleaseList& list, const InstalledVersion& version) {
  return std::any_of(list.withdrawn.begin(), list.withdrawn.end(), [&](const auto& withdrawn) {
    if (version.archiveSha256.empty()) return withdrawn.version == version.version;
    return withdrawn.archiveSha256 == version.archiveSha256;
  });
}

const InstalledVersion* startedVersion(const ReleaseList& list, const Inventory& inventory) {
  for (const InstalledVersion& version : inventory.applications)
    if (!isWithdrawn(list, version) &&
        !isBlocked(inventory.trials, version.folder, version.archiveSha256))
      return &version;
  return nullptr;
}

std::string whyNotUsable(const ReleaseList& list, const Installation& installation) {
  for (const ReleaseComponent& component : list.components) {
    const bool isRuntime = component.role == kRuntimeRole;
    const bool isUsable = isRuntime ? isUsableAsJre(component.name, component.version)
                                    : isUsableInFolderName(component.name, component.version);
    if (!isUsable) return component.name + ' ' + component.version + " cannot be a folder's name";
    // An installation may have chosen a runtime of another name.
    if (!isRuntime && component.name != expectedName(installation, component.role))
      return "its " + component.role + " is " + component.name;
  }
  return "";
}

Plan planFor(const ReleaseList& list, const Installation& installation,
             const Inventory& inventory) {
  Plan plan;
  if (isApplicationBlocked(list, inventory)) {
    logMessage("[Update] Release %lld was tried here and did not work\n",
               static_cast<long long>(list.number));
    return plan;
  }
  for (const ReleaseComponent& component : list.components) {
    if (component.name != expectedName(installation, component.role)) continue;
    PlannedComponent planned{component, folderNameOf(component), std::nullopt, false};
    if (isThere(installation, planned.folder) || !isNeeded(component, list, inventory)) continue;
    planned.road = roadOf(component, inventory);
    planned.isStaged = isStagedWhole(installation, planned.folder, component);
    plan.components.push_back(planned);
  }
  return plan;
}

}  // namespace quillory::update
