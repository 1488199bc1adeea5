#include "packager/commands/withdraw.h"

#include <algorithm>
#include <memory>

#include "packager/commands/list_change.h"

namespace quillory::pack {
namespace {

[[noreturn]] void reject(const ReleaseFolder& folder, const std::string& what,
                         const std::string& advice) {
  throw RejectedInput({{Severity::kError, "withdraw", what, {folder.path(), 0}, advice}});
}

// The application of that version as the channel has released it; null when it never did.
const ReleaseComponent* applicationOf(const ReleaseFolder& folder, const std::string& version) {
  for (const ReleaseList& list : folder.lists()) {
    const ReleaseComponent* application = componentOf(list, kApplicationRole);
    if (application != nullptr && application->version == version) {
      return application;
    }
  }
  return nullptr;
}

bool isWithdrawn(const ReleaseList& list, const ReleaseComponent& application) {
  return std::any_of(list.withdrawn.begin(), list.withdrawn.end(), [&](const auto& withdrawn) {
    return withdrawn.archiveSha256 == application.plainSha256;
  });
}

// The newest earlier list whose application may be started.
const ReleaseList* listToGoBackTo(const ReleaseList& list, const ReleaseFolder& folder) {
  const ReleaseList* best = nullptr;
  for (const ReleaseList& earlier : folder.lists()) {
    const ReleaseComponent* application = componentOf(earlier, kApplicationRole);
    if (application == nullptr || isWithdrawn(list, *application)) {
      continue;
    }
    if (best == nullptr || std::stoll(application->version) >
                               std::stoll(componentOf(*best, kApplicationRole)->version)) {
      best = &earlier;
    }
  }
  return best;
}

}  // namespace

void withdrawFrom(ReleaseList& list, const ReleaseFolder& folder, const std::string& version) {
  const ReleaseComponent* bad = applicationOf(folder, version);
  if (bad == nullptr) {
    reject(folder, "version " + version + " of \"" + list.application + "\" was never released",
           "name the number of application.version");
  }
  if (isWithdrawn(list, *bad)) {
    reject(folder, "version " + version + " is withdrawn already", "");
  }
  list.withdrawn.push_back({bad->plainSha256, version});
  for (ReleaseComponent& offered : list.components) {
    if (offered.role != kApplicationRole || offered.plainSha256 != bad->plainSha256) {
      continue;
    }
    const ReleaseList* back = listToGoBackTo(list, folder);
    if (back == nullptr) {
      reject(folder, "there is no other version to go back to", "release a newer version instead");
    }
    offered = *componentOf(*back, kApplicationRole);
    list.notes = back->notes;
    list.rollout = {list.issued, 0, 100};
    return;
  }
}

Command withdrawCommand() {
  struct WithdrawArguments : ListArguments {
    std::string version;
  };
  const auto given = std::make_shared<WithdrawArguments>();
  std::vector<Argument> arguments = listArguments(*given);
  arguments.insert(arguments.begin(), {.name = "VERSION",
                                       .description = "the application.version that is bad",
                                       .into = &given->version,
                                       .isRequired = true});
  return {"withdraw", "takes a bad version back: installations return to the one before",
          "quillory-pack withdraw 12", std::move(arguments), [given](Reporter& reporter) {
            return runListChange(
                *given,
                [&](ReleaseList& list, const ReleaseFolder& folder) {
                  withdrawFrom(list, folder, given->version);
                },
                reporter);
          }};
}

}  // namespace quillory::pack
