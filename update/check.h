// A check: the release list is fetched, verified, judged and kept.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "update/installation.h"
#include "update/plan.h"
#include "update/settings_in_force.h"
#include "update/state.h"
#include "update/transport.h"

namespace quillory::update {

enum class CheckEnd {
  kOffer,   ///< there is something to load or to install
  kNone,    ///< all is there, or it is not (yet) for this installation
  kPinned,  ///< the installation is to stay where it is
  kFrozen,  ///< nothing new, and the newest list has expired
  kFailed,
  kCancelled,
};

struct CheckResult {
  CheckEnd end = CheckEnd::kFailed;
  std::string reason{};               ///< in words, of what is neither an offer nor plainly nothing
  std::optional<ReleaseList> list{};  ///< what is offered: the newest, or a stepping stone
  Plan plan{};
  Offer offer{};                 ///< also what is there already
  std::int64_t frozenSince = 0;  ///< when the newest list was issued
};

/// What a check stands on.
struct CheckRequest {
  const Installation& installation;
  const SettingsInForce& force;
  Transport& transport;
  std::string draw{};  ///< that decides about a rollout in the place of the state's; "" for that
};

/// Where files are fetched from, in this order: the update URL and the mirrors, each with a '/' at
/// its end.
std::vector<std::string> serversOf(const Installation& installation,
                                   const UpdateSettings& settings);

/// One request where nothing has changed. Afterwards `state` says what is known, but is not
/// written; a list that was taken is, to QYUpdates/releases.
CheckResult check(const CheckRequest& request, State& state);

/// What the list that was taken last comes to now, without asking anybody: for a release that is
/// staged, and waits for its place while there is no line. kFailed where there is no such list.
CheckResult checkKept(const CheckRequest& request, State& state);

/// The list that was taken last, when it is one of this installation's and a signature holds.
std::optional<ReleaseList> keptList(const CheckRequest& request, const State& state);

}  // namespace quillory::update
