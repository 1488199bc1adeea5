#include "update/commands.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <iterator>
#include <optional>
#include <vector>

#include "formats/release_list_format.h"
#include "install/leftovers.h"
#include "support/files.h"
#include "support/log.h"
#include "update/check.h"
#include "update/installing.h"
#include "update/loading.h"
#include "update/metered.h"
#include "update/pace.h"
#include "update/retention.h"
#include "update/staged.h"
#include "update/state.h"
#include "update/update_folder.h"
#include "update/update_lock.h"

namespace quillory::update {
namespace {

constexpr std::int64_t kSecondsOfHour = 3600;
constexpr std::int64_t kUsualReminderHours = 24;
constexpr std::int64_t kMostReminderHours = 24 * 365;

// One run with the lock held.
class Run {
 public:
  explicit Run(const CommandRequest& request)
      : request_(request),
        its_(request.installation),
        state_(readState(its_.updatesFolder())),
        force_(settingsInForce(its_, state_.chosenChannel, request.administratorsFolder)) {}

  int run() {
    clearUnfinishedFiles(its_.updatesFolder());
    switch (request_.command) {
      case Command::kSkip:
        state_.skippedVersion = request_.argument;
        return save(kExitDone);
      case Command::kRemindLater:
        return remindLater();
      case Command::kSetChannel:
        return setChannel();
      case Command::kBackground:
        return background();
      default:
        return foreground();
    }
  }

 private:
  int remindLater() {
    std::int64_t hours = kUsualReminderHours;
    const std::string& text = request_.argument;
    if (!text.empty()) {
      const auto parsed = std::from_chars(text.data(), text.data() + text.size(), hours);
      if (parsed.ptr != text.data() + text.size() || hours < 0 || hours > kMostReminderHours)
        return misuse("that is no number of hours: " + text);
    }
    state_.remindAfter = now() + hours * kSecondsOfHour;
    return save(kExitDone);
  }

  int setChannel() {
    if (!isChannelName(request_.argument))
      return misuse("that cannot be the name of a channel: " + request_.argument);
    state_.chosenChannel = request_.argument;
    state_.nextCheck = 0;
    state_.offer = {};
    return save(kExitDone);
  }

  // Nothing becomes of it, nor of what is known.
  int misuse(const std::string& mistake) {
    request_.lines(Line("failed").with("reason", mistake).with("retry", 0));
    return kExitUsage;
  }

  // Without an application there is nothing to be kept as it is: what is packed without one
  // installs it, unless the administrator wants nothing to be loaded.
  bool isOff() {
    if (!force_.isOff()) return false;
    const bool isPackagers = force_.settings.mode == UpdateMode::kOff && !force_.isAdministrators;
    return !isPackagers || its_.updateUrl.empty() || request_.command != Command::kInstall ||
           !applicationVersions(its_).empty();
  }

  int switchedOff() {
    logMessage("[Update] %s\n", force_.whyOff.c_str());
    setPhase(Phase::kOff, force_.whyOff);
    return save(kExitOff);
  }

  int foreground() {
    if (isOff()) return switchedOff();
    finishRuntimes(its_);
    const std::optional<int> ended = checkNow();
    if (ended) return *ended;
    if (request_.command == Command::kCheck) return save(kExitDone);
    if (const std::optional<int> failed = stage()) return *failed;
    return request_.command == Command::kInstall ? install() : done();
  }

  bool isWanted() const {
    const UpdateMode mode = force_.settings.mode;
    return mode != UpdateMode::kManual && mode != UpdateMode::kOff;
  }

  int background() {
    if (isOff()) return switchedOff();
    if (!isWanted()) return kExitDone;
    finishRuntimes(its_);
    if (!isDue(state_, force_.settings.checkHours)) {
      deleteOldVersions(its_, force_.settings.keepVersions);
      return kExitDone;
    }
    const std::optional<int> ended = checkNow();
    deleteOldVersions(its_, force_.settings.keepVersions);
    if (ended) return *ended;
    if (!isToBeLoadedUnasked()) return save(kExitDone);
    if (const std::optional<int> failed = stage()) return *failed;
    return install();
  }

  bool isToBeLoadedUnasked() const {
    if (!mayInstall(its_)) return false;
    if (result_.offer.isCritical) return true;
    if (force_.settings.mode == UpdateMode::kAsk) return false;
    if (result_.offer.version == state_.skippedVersion || state_.remindAfter > now()) return false;
    if (result_.plan.size() == 0 || !meteredCalls.isMetered()) return true;
    logMessage("[Update] This line costs by the byte: nothing is loaded unasked\n");
    return false;
  }

  // Nothing when there is an offer to go on with.
  std::optional<int> checkNow() {
    request_.lines(Line("phase").with("name", nameOf(Phase::kChecking)));
    result_ = check(checkRequest(), state_);
    switch (result_.end) {
      case CheckEnd::kFailed:
        noteFailure(state_);
        if (isStagedBefore()) break;
        return fail(result_.reason, true, kExitFailed);
      case CheckEnd::kCancelled:
        return cancelled(state_.phase);
      default:
        noteAnswer(state_, force_.settings.checkHours);
    }
    if (result_.end == CheckEnd::kOffer) {
      offer();
      return std::nullopt;
    }
    return nothingNew();
  }

  // Without a line what has been loaded can be put in its place all the same.
  bool isStagedBefore() {
    if (request_.command != Command::kInstall || state_.stagedVersion.empty()) return false;
    CheckResult kept = checkKept(checkRequest(), state_);
    if (kept.end != CheckEnd::kOffer || !kept.plan.isStaged()) return false;
    logMessage("[Update] The server cannot be asked: %s\n", result_.reason.c_str());
    result_ = std::move(kept);
    return true;
  }

  CheckRequest checkRequest() const { return {its_, force_, request_.transport, request_.draw}; }

  int nothingNew() {
    state_.offer = {};
    state_.stagedVersion.clear();
    // What a run has left that was killed behind its last move.
    clearStaging(its_, {});
    clearDownloads(its_.inUpdates(kDownloadsFolder), {});
    if (result_.end == CheckEnd::kFrozen) {
      setPhase(Phase::kFrozen, "");
      request_.lines(Line("frozen").with("since", result_.frozenSince));
      return save(kExitDone);
    }
    setPhase(Phase::kNone, result_.reason);
    if (!result_.reason.empty()) logMessage("[Update] %s\n", result_.reason.c_str());
    request_.lines(Line("none").with("newest", result_.offer.version));
    return save(result_.end == CheckEnd::kPinned ? kExitOff : kExitDone);
  }

  void offer() {
    const Offer& offer = result_.offer;
    state_.offer = offer;
    const bool isStaged = result_.plan.isStaged();
    state_.stagedVersion = isStaged ? offer.version : "";
    setPhase(isStaged ? Phase::kStaged : Phase::kAvailable, "");
    request_.lines(Line("offer")
                       .with("release", offer.release)
                       .with("version", offer.version)
                       .with("shown", offer.shownVersion)
                       .with("size", offer.size)
                       .with("critical", offer.isCritical ? 1 : 0));
  }

  // Nothing when everything is staged.
  std::optional<int> stage() {
    if (!mayInstall(its_)) return request_.elevate ? elevate() : needsAdministrator();
    setPhase(Phase::kDownloading, "");
    request_.lines(Line("phase").with("name", nameOf(Phase::kDownloading)));
    writeState(state_, its_.updatesFolder());
    const std::vector<std::string> keys = archiveKeys(state_.keys, force_.settings, its_);
    const std::vector<std::string> servers = serversOf(its_, force_.settings);
    const FetchResult loaded =
        load({its_, servers, keys, request_.transport, request_.lines}, result_.plan);
    if (loaded.end != FetchEnd::kComplete) return failed(loaded);
    for (PlannedComponent& planned : result_.plan.components) planned.isStaged = true;
    state_.stagedVersion = result_.offer.version;
    setPhase(Phase::kStaged, "");
    return std::nullopt;
  }

  int install() {
    const std::vector<InstalledVersion> before = applicationVersions(its_);
    for (const PlannedComponent& planned : result_.plan.components)
      request_.lines(
          Line("step").with("what", "install").with("component", planned.component.role));
    const FetchResult installed = installStaged(its_, result_.plan);
    if (installed.end != FetchEnd::kComplete) return failed(installed);
    if (!before.empty() && before.front().version != result_.offer.version)
      state_.previousVersion = before.front().version;
    state_.stagedVersion.clear();
    state_.offer = {};
    setPhase(Phase::kNone, "");
    return done();
  }

  int done() {
    request_.lines(
        Line("done").with("version", result_.offer.version).with("release", result_.offer.release));
    return save(kExitDone);
  }

  int needsAdministrator() {
    return fail("this installation is for all users: it needs an administrator", false,
                kExitNeedsAdministrator);
  }

  // What the run with the administrator's rights has told its lines of is not told again.
  int elevate() {
    const std::vector<InstalledVersion> before = applicationVersions(its_);
    writeState(state_, its_.updatesFolder());
    const int status = request_.elevate(state_.draw);
    logMessage("[Update] The run with the administrator's rights has ended with status %d\n",
               status);
    if (status < 0 || std::ranges::find(kElevationStatuses, status) != std::end(kElevationStatuses))
      return fail("the administrator's rights were not given", true, kExitNeedsAdministrator);
    if (status != kExitDone) {
      if (status != kExitBusy) setPhase(Phase::kFailed, "the administrator's run has failed");
      return save(status);
    }
    const std::vector<InstalledVersion> now = applicationVersions(its_);
    if (now.empty() || now.front().version != result_.offer.version) return save(kExitDone);
    if (!before.empty() && before.front().version != now.front().version)
      state_.previousVersion = before.front().version;
    state_.stagedVersion.clear();
    state_.offer = {};
    setPhase(Phase::kNone, "");
    return save(kExitDone);
  }

  int failed(const FetchResult& result) {
    if (result.end == FetchEnd::kCancelled) return cancelled(Phase::kAvailable);
    noteFailure(state_);
    return fail(result.reason, true, kExitFailed);
  }

  // Nothing has failed: what was known before is known still.
  int cancelled(Phase phase) {
    logMessage("[Update] Cancelled\n");
    state_.phase = phase;
    request_.lines(Line("failed").with("reason", "cancelled").with("retry", 1));
    return save(kExitFailed);
  }

  int fail(const std::string& reason, bool isWorthRetrying, int status) {
    logMessage("[Update] Not updated: %s\n", reason.c_str());
    setPhase(Phase::kFailed, reason);
    request_.lines(Line("failed").with("reason", reason).with("retry", isWorthRetrying ? 1 : 0));
    return save(status);
  }

  void setPhase(Phase phase, const std::string& reason) {
    state_.phase = phase;
    state_.reason = reason;
  }

  // What cannot be remembered is done all the same.
  int save(int status) {
    writeState(state_, its_.updatesFolder());
    return status;
  }

  const CommandRequest& request_;
  const Installation& its_;
  State state_;
  SettingsInForce force_;
  CheckResult result_;
};

void tellStatus(const CommandRequest& request) {
  const State state = readState(request.installation.updatesFolder());
  Line line = Line("status").with("phase", nameOf(state.phase));
  line.with("reason", state.reason)
      .with("release", state.highestRelease)
      .with("checked", state.lastCheck)
      .with("answered", state.lastAnswer)
      .with("next", state.nextCheck)
      .with("offered", state.offer.version)
      .with("staged", state.stagedVersion)
      .with("previous", state.previousVersion)
      .with("shown", state.offer.shownVersion)
      .with("size", state.offer.size)
      .with("skipped", state.skippedVersion)
      .with("remind", state.remindAfter);
  request.lines(line);
}

int failWithoutState(const CommandRequest& request, const std::string& reason, int status) {
  logMessage("[Update] Not updated: %s\n", reason.c_str());
  request.lines(Line("failed").with("reason", reason).with("retry", 1));
  return status;
}

}  // namespace

int runCommand(const CommandRequest& request) {
  if (request.command == Command::kStatus) {
    tellStatus(request);
    return kExitDone;
  }
  const std::string folder = request.installation.updatesFolder();
  if (!makeDirWithParents(folder)) {
    const std::string why = folder + ": " + std::strerror(errno);
    return failWithoutState(
        request, why, mayInstall(request.installation) ? kExitFailed : kExitNeedsAdministrator);
  }
  UpdateLock lock;
  switch (lock.take(folder)) {
    case UpdateLock::Taken::kBusy:
      request.lines(Line("busy"));
      return kExitBusy;
    case UpdateLock::Taken::kNot:
      return failWithoutState(request, folder + ": " + std::strerror(errno),
                              errno == EACCES ? kExitNeedsAdministrator : kExitFailed);
    case UpdateLock::Taken::kYes:
      break;
  }
  return Run(request).run();
}

}  // namespace quillory::update
