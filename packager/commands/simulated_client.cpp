#include "packager/commands/simulated_client.h"

#include <filesystem>
#include <utility>

#include "install/version_folders.h"
#include "packager/reading/plain_archive.h"
#include "packager/report/findings.h"
#include "update/installing.h"
#include "update/loading.h"

namespace quillory::pack {
namespace {

void require(const update::FetchResult& result) {
  stopIfInterrupted();
  if (result.end != update::FetchEnd::kComplete) {
    throw PackError("a client does not install it: " + result.reason);
  }
}

}  // namespace

SimulatedClient::SimulatedClient(const std::string& application, std::string base,
                                 std::vector<std::string> keys)
    : work_(temporaryFolder()), servers_{std::move(base)}, keys_(std::move(keys)) {
  installation_.appName = application;
  installation_.masterFolder = work_ / "installed";
  installation_.ownFolder = installation_.masterFolder;
  installation_.updaterFolder = versionFolder(installation_.masterFolder, kUpdaterName, "0");
  installation_.updateUrl = servers_.front();
  std::filesystem::create_directories(installation_.updatesFolder());
}

void SimulatedClient::trust(const std::vector<std::string>& keys) {
  keys_.insert(keys_.end(), keys.begin(), keys.end());
}

std::vector<SimulatedStep> SimulatedClient::take(const ReleaseList& list,
                                                 update::Transport& transport) {
  if (const ReleaseComponent* runtime = componentOf(list, kRuntimeRole)) {
    installation_.jreName = runtime->name;
  }
  const std::string why = update::whyNotUsable(list, installation_);
  if (!why.empty()) {
    throw PackError("a client does not take it: " + why);
  }
  const update::Plan plan =
      update::planFor(list, installation_, update::takeInventory(installation_));
  std::vector<SimulatedStep> steps;
  for (const update::PlannedComponent& planned : plan.components) {
    steps.push_back({planned.component.name, planned.component.version,
                     planned.road ? planned.road->delta.baseVersion : "", planned.size(),
                     planned.component.archive.name});
  }
  require(
      update::load({installation_, servers_, keys_, transport, [](const update::Line&) {}}, plan));
  require(update::installStaged(installation_, plan));
  return steps;
}

}  // namespace quillory::pack
