#include "update/check.h"

#include <algorithm>

#include "formats/release_list_format.h"
#include "formats/update_url.h"
#include "support/log.h"
#include "support/output_file.h"
#include "support/paths.h"
#include "support/plain_file.h"
#include "update/cancel.h"
#include "update/chance.h"
#include "update/fetch.h"
#include "update/judgement.h"
#include "update/pace.h"
#include "update/system_version.h"
#include "update/update_folder.h"

namespace quillory::update {
namespace {

constexpr int kFetched = 200;
constexpr int kNotModified = 304;
constexpr int kMostSteps = 10;
constexpr unsigned kListMode = 0644;

/// A list that one of the servers has, or why there is none.
struct Answer {
  std::optional<ReleaseList> list;
  std::string bytes;  ///< "" of the kept one
  std::string eTag;
  std::vector<std::string> keysFromNowOn;
  std::string reason;
  bool isCancelled = false;
};

class Check {
 public:
  Check(const CheckRequest& request, State& state)
      : request_(request), state_(state), name_(releaseListName(app(), channel())) {}

  CheckResult run() {
    askFor(state_, channel());
    if (state_.draw.empty()) state_.draw = newDraw();
    state_.lastCheck = now();
    kept_ = keptList(request_, state_);
    Answer answer = askAll();
    if (answer.isCancelled) return {.end = CheckEnd::kCancelled, .reason = "cancelled"};
    if (!answer.list) return {.end = CheckEnd::kFailed, .reason = answer.reason};
    return take(answer);
  }

  CheckResult judgeKept() {
    kept_ = keptList(request_, state_);
    return kept_ ? judge(*kept_, 0) : CheckResult{};
  }

 private:
  const std::string& app() const { return request_.installation.appName; }
  const std::string& channel() const { return request_.force.settings.channel; }

  Answer askAll() {
    Answer first;
    for (const std::string& server : serversOf(request_.installation, request_.force.settings)) {
      Answer answer = ask(server);
      if (answer.list || answer.isCancelled) return answer;
      logMessage("[Update] %s%s: %s\n", server.c_str(), name_.c_str(), answer.reason.c_str());
      if (first.reason.empty()) first = std::move(answer);
    }
    if (first.reason.empty()) first.reason = "there is no update URL";
    return first;
  }

  Answer ask(const std::string& server) {
    const std::string url = server + escapedForUrl(name_);
    const std::string eTag = kept_ ? state_.answerETag : "";
    TextFetch fetch = fetchText(request_.transport, url, kMaxReleaseListBytes, eTag);
    logMessage("[Update] %s: status %d, %lld bytes up and %lld down\n", url.c_str(),
               fetch.result.status, static_cast<long long>(fetch.result.bytesUp),
               static_cast<long long>(fetch.result.bytesDown));
    Answer answer;
    answer.isCancelled = fetch.result.end == TransferEnd::kCancelled;
    answer.reason = fetch.result.reason;
    if (fetch.result.end != TransferEnd::kComplete) return answer;
    if (fetch.result.status == kNotModified && kept_) {
      answer.list = kept_;
      answer.eTag = state_.answerETag;
      return answer;
    }
    if (fetch.result.status != kFetched) {
      answer.reason = "the server answers with status " + std::to_string(fetch.result.status);
      return answer;
    }
    return judged(std::move(fetch));
  }

  Answer judged(TextFetch fetch) {
    Answer answer;
    ReleaseListVerdict verdict = readReleaseListBytes(
        fetch.bytes, trustedKeys(state_.keys, request_.force.settings, request_.installation));
    answer.reason = verdict.refusal;
    if (!verdict.list) return answer;
    answer.reason = whyNotTaken(
        *verdict.list, {app(), channel(), state_.highestRelease, kept_ ? kept_->issued : 0});
    if (answer.reason.empty()) answer.reason = whyNotUsable(*verdict.list, request_.installation);
    if (!answer.reason.empty()) return answer;
    answer.list = std::move(verdict.list);
    answer.bytes = std::move(fetch.bytes);
    answer.eTag = std::move(fetch.eTag);
    answer.keysFromNowOn = std::move(verdict.keysFromNowOn);
    return answer;
  }

  CheckResult take(const Answer& answer) {
    const ReleaseList& list = *answer.list;
    const bool isNews = list.number > state_.highestRelease;
    keep(answer);
    CheckResult result = judge(list, kMostSteps);
    const bool isNothingNew = result.end == CheckEnd::kNone && !isNews;
    if (isExpired(list, now()) && isNothingNew) {
      result.end = CheckEnd::kFrozen;
      result.frozenSince = list.issued;
    }
    return result;
  }

  void keep(const Answer& answer) {
    state_.lastAnswer = now();
    state_.highestRelease = answer.list->number;
    state_.withdrawn.clear();
    for (const WithdrawnRelease& withdrawn : answer.list->withdrawn)
      state_.withdrawn.push_back(withdrawn.version);
    if (!answer.keysFromNowOn.empty() && answer.keysFromNowOn != state_.keys) {
      logMessage("[Update] From now on release %lld's keys count\n",
                 static_cast<long long>(answer.list->number));
      state_.keys = answer.keysFromNowOn;
    }
    if (!answer.bytes.empty()) state_.answerETag = write(answer.bytes) ? answer.eTag : "";
  }

  bool write(const std::string& bytes) {
    OutputFile file(request_.installation.inUpdates(kReleasesFile), ExactMode{kListMode});
    if (file.isOpen() && file.write(bytes.data(), bytes.size()) && file.commit()) return true;
    logMessage("[Update] The release list cannot be kept: %s\n", file.error().c_str());
    return false;
  }

  CheckResult judge(const ReleaseList& list, int stepsLeft) {
    const Inventory inventory = takeInventory(request_.installation);
    const ReleaseQuestion question = questionOf(list, inventory);
    const Admission admission = admissionTo(list, question);
    if (admission == Admission::kStepFirst) return step(list, stepsLeft);
    CheckResult result;
    result.list = list;
    result.offer = offerOf(list, question);
    result.end = CheckEnd::kNone;
    if (admission == Admission::kPinned) {
      result.end = CheckEnd::kPinned;
      result.reason = "this application is to stay at version " + request_.force.pin;
    } else if (admission == Admission::kSystemTooOld) {
      result.reason =
          "release " + std::to_string(list.number) + " needs a newer system: " + list.minimumSystem;
    } else if (admission == Admission::kIn) {
      result.plan = planFor(list, request_.installation, inventory);
      if (!result.plan.isEmpty()) result.end = CheckEnd::kOffer;
      result.offer.size = result.plan.size();
    }
    return result;
  }

  ReleaseQuestion questionOf(const ReleaseList& list, const Inventory& inventory) const {
    const InstalledVersion* const started = startedVersion(list, inventory);
    const bool isNewestWithdrawn =
        !inventory.applications.empty() && isWithdrawn(list, inventory.applications.front());
    return {.installed = started == nullptr ? -1 : started->number,
            .isWithdrawn = isNewestWithdrawn,
            .draw = request_.draw.empty() ? state_.draw : request_.draw,
            .systemVersion = systemVersion(),
            .pin = request_.force.pin,
            .now = now()};
  }

  static Offer offerOf(const ReleaseList& list, const ReleaseQuestion& question) {
    Offer offer;
    offer.release = list.number;
    if (const ReleaseComponent* const application = componentOf(list, kApplicationRole)) {
      offer.version = application->version;
      offer.shownVersion = application->shownVersion;
    }
    offer.isCritical = isCritical(list, question);
    offer.notes = list.notes;
    return offer;
  }

  // The older list that this one names for those who are too old for it.
  CheckResult step(const ReleaseList& list, int stepsLeft) {
    const ReleaseFile& stone = list.steppingStone;
    CheckResult failed{.end = CheckEnd::kFailed,
                       .reason = "release " + std::to_string(list.number) +
                                 " names no release that leads to it from this version"};
    if (stone.name.empty() || stepsLeft == 0) return failed;
    for (const std::string& server : serversOf(request_.installation, request_.force.settings)) {
      const TextFetch fetch = fetchText(request_.transport, server + escapedForUrl(stone.name),
                                        kMaxReleaseListBytes, "");
      if (fetch.result.end == TransferEnd::kCancelled)
        return {.end = CheckEnd::kCancelled, .reason = "cancelled"};
      const ReleaseListVerdict verdict = readSteppingStoneBytes(fetch.bytes, stone);
      if (verdict.list && isOurs(*verdict.list)) return judge(*verdict.list, stepsLeft - 1);
      failed.reason =
          stone.name + ": " + (fetch.result.reason.empty() ? verdict.refusal : fetch.result.reason);
      logMessage("[Update] %s%s\n", server.c_str(), failed.reason.c_str());
    }
    return failed;
  }

  // Its number and its expiry are not asked: a list that is trusted has named it.
  bool isOurs(const ReleaseList& list) const {
    return whyNotTaken(list, {app(), channel(), 0, 0}).empty() &&
           whyNotUsable(list, request_.installation).empty();
  }

  const CheckRequest& request_;
  State& state_;
  const std::string name_;
  std::optional<ReleaseList> kept_;
};

}  // namespace

std::vector<std::string> serversOf(const Installation& installation,
                                   const UpdateSettings& settings) {
  std::vector<std::string> servers;
  if (!installation.updateUrl.empty()) servers.push_back(installation.updateUrl);
  for (std::string mirror : settings.mirrors) {
    if (!mirror.ends_with('/')) mirror += '/';
    if (std::find(servers.begin(), servers.end(), mirror) == servers.end())
      servers.push_back(std::move(mirror));
  }
  return servers;
}

std::optional<ReleaseList> keptList(const CheckRequest& request, const State& state) {
  const ReleaseListVerdict verdict =
      readReleaseList(request.installation.inUpdates(kReleasesFile),
                      trustedKeys(state.keys, request.force.settings, request.installation));
  if (!verdict.list) return std::nullopt;
  const ListQuestion question{request.installation.appName, request.force.settings.channel,
                              state.highestRelease, 0};
  if (!whyNotTaken(*verdict.list, question).empty()) return std::nullopt;
  return verdict.list;
}

CheckResult check(const CheckRequest& request, State& state) { return Check(request, state).run(); }

CheckResult checkKept(const CheckRequest& request, State& state) {
  return Check(request, state).judgeKept();
}

}  // namespace quillory::update
