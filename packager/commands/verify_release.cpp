#include "packager/commands/verify_release.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "formats/archive_identity.h"
#include "formats/release_list.h"
#include "formats/update_url.h"
#include "packager/commands/launcher_log.h"
#include "packager/commands/simulated_client.h"
#include "packager/commands/trusted_keys.h"
#include "packager/config/config.h"
#include "packager/config/rollout.h"
#include "packager/keys/public_key.h"
#include "packager/report/dates.h"
#include "packager/report/exit_statuses.h"
#include "update/fetch.h"
#include "update/judgement.h"

namespace quillory::pack {
namespace {

constexpr int kOk = 200;

std::string sized(std::int64_t bytes) {
  return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

class Verification {
 public:
  explicit Verification(const VerifyReleaseRequest& request)
      : request_(request),
        source_(request.place),
        client_(request.application, source_.base(), request.keys) {}

  VerifiedRelease run() {
    const ReleaseList list = newest();
    judge(list);
    if (!runsOn(list.platform, thisPlatform())) {
      throw PackError("the release is for " + list.platform +
                          ", and an installation of it cannot "
                          "be tried here",
                      "verify it on a machine of that system", {request_.place, 0});
    }
    if (!request_.as.empty()) {
      prepare(list);
    }
    stepFirst(list);
    take(list);
    total();
    return std::move(result_);
  }

 private:
  void step(const std::string& line) { result_.steps.push_back(line); }

  std::string fetched(const std::string& name) {
    const update::TextFetch fetch =
        update::fetchText(source_, source_.base() + escapedForUrl(name), kMaxReleaseListBytes, "");
    if (fetch.result.end != update::TransferEnd::kComplete || fetch.result.status != kOk) {
      throw PackError(name + " cannot be had: " +
                          (fetch.result.reason.empty()
                               ? "the server answers " + std::to_string(fetch.result.status)
                               : fetch.result.reason),
                      "", {request_.place, 0});
    }
    return fetch.bytes;
  }

  ReleaseList newest() {
    const std::string name = releaseListName(request_.application, request_.channel);
    const std::string bytes = fetched(name);
    const ReleaseListVerdict verdict = readReleaseListBytes(bytes, request_.keys);
    if (!verdict.list) {
      throw PackError(name + " is refused by every client: " + verdict.refusal, "",
                      {request_.place, 0});
    }
    step("list: " + name + ", " + sized(static_cast<std::int64_t>(bytes.size())) + ", release " +
         std::to_string(verdict.list->number) + ", good until " +
         readableTime(verdict.list->expires));
    for (const std::string& key : verdict.signedBy) {
      step("signed by " + PublicKey::fromHex(key, name).fingerprint());
    }
    if (!verdict.keysFromNowOn.empty()) {
      client_.trust(verdict.keysFromNowOn);
      step("its clients trust " + std::to_string(verdict.keysFromNowOn.size()) +
           " other keys from now on");
    }
    return *verdict.list;
  }

  // What a client would ask of a list that it sees for the first time.
  void judge(const ReleaseList& list) {
    if (list.application != request_.application || list.channel != request_.channel) {
      throw PackError(
          "the list is of \"" + list.application + "\", channel \"" + list.channel + '"', "",
          {request_.place, 0});
    }
    if (update::isExpired(list, request_.now)) {
      result_.findings.push_back(
          {Severity::kError,
           "expired",
           "the list has expired: clients tell that there is no news since " +
               readableTime(list.issued),
           {request_.place, 0},
           "quillory-pack refresh"});
    }
    const std::int64_t share = update::shareAt(list.rollout, request_.now);
    if (share < 10'000) {
      step("rollout: offered to " + std::to_string(share / 100) +
           " % of the installations at present; this is tried as one of them");
    }
  }

  // The list in which the application had that version.
  ReleaseList listOf(const ReleaseList& newest, const std::string& version) {
    for (std::int64_t number = newest.number; number >= 1; --number) {
      const std::string name = keptReleaseListName(request_.application, request_.channel, number);
      const update::TextFetch fetch = update::fetchText(
          source_, source_.base() + escapedForUrl(name), kMaxReleaseListBytes, "");
      if (fetch.result.end != update::TransferEnd::kComplete || fetch.result.status != kOk) {
        continue;
      }
      const ReleaseListVerdict verdict = readReleaseListBytes(fetch.bytes, request_.keys);
      const ReleaseComponent* application =
          verdict.list ? componentOf(*verdict.list, kApplicationRole) : nullptr;
      if (application != nullptr && application->version == version) {
        return *verdict.list;
      }
    }
    throw PackError("no list of version " + version +
                        " is there, so that an installation of it "
                        "cannot be tried",
                    "--as names an application.version that was released", {request_.place, 0});
  }

  // Not counted: it has come to that version some day.
  void prepare(const ReleaseList& newest) {
    ReleaseList before = listOf(newest, request_.as);
    for (ReleaseComponent& component : before.components) {
      component.deltas.clear();
    }
    client_.take(before, source_);
    prepared_ = source_.requests().size();
    step("installed: version " + request_.as + " of release " + std::to_string(before.number));
  }

  void stepFirst(const ReleaseList& list) {
    if (request_.as.empty() || std::stoll(request_.as) >= list.minimumFrom) {
      return;
    }
    const ReleaseListVerdict stone =
        readSteppingStoneBytes(fetched(list.steppingStone.name), list.steppingStone);
    if (!stone.list) {
      throw PackError(list.steppingStone.name + " is refused: " + stone.refusal, "",
                      {request_.place, 0});
    }
    step("stepping stone: release " + std::to_string(stone.list->number) + ", because version " +
         request_.as + " is below " + std::to_string(list.minimumFrom));
    take(*stone.list);
  }

  // A client does with the whole archive what a delta has failed to do, and says so to nobody.
  void requireItsDelta(const SimulatedStep& step, std::size_t firstRequest) {
    const auto& requests = source_.requests();
    const bool isLoadedWhole =
        std::any_of(requests.begin() + static_cast<std::ptrdiff_t>(firstRequest), requests.end(),
                    [&](const SourceRequest& request) { return request.name == step.archive; });
    if (!step.from.empty() && isLoadedWhole) {
      result_.findings.push_back({Severity::kError,
                                  "delta",
                                  "the delta of \"" + step.component + "\" from version " +
                                      step.from + " is of no use: clients load " + step.archive +
                                      " as well",
                                  {request_.place, 0},
                                  "copy the release files again, or release anew"});
    }
  }

  void take(const ReleaseList& list) {
    const std::size_t firstRequest = source_.requests().size();
    const std::vector<SimulatedStep> steps = client_.take(list, source_);
    for (const SimulatedStep& one : steps) {
      requireItsDelta(one, firstRequest);
      step("installed: " + one.component + ' ' + one.version + ", " + sized(one.bytes) +
           (one.from.empty() ? ", whole" : ", restored from version " + one.from));
    }
    if (steps.empty()) {
      step("nothing to load: all of it is there");
    }
  }

  void total() {
    // The list came before what was prepared, and all else behind it.
    for (std::size_t i = 0; i < source_.requests().size(); ++i) {
      if (i == 0 || i >= prepared_) {
        result_.requests.push_back(source_.requests()[i]);
        result_.bytes += source_.requests()[i].bytes;
      }
    }
  }

  const VerifyReleaseRequest& request_;
  ReleaseSource source_;
  SimulatedClient client_;
  VerifiedRelease result_;
  std::size_t prepared_ = 1;
};

// Until the end of the scope what else is printed, by a Java runtime that is set up say, goes to
// standard error, or nowhere: standard output belongs to the results.
class OutputAside {
 public:
  explicit OutputAside(bool shown) : before_(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int nowhere = shown ? -1 : open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere < 0 ? STDERR_FILENO : nowhere, STDOUT_FILENO);
    if (nowhere >= 0) {
      close(nowhere);
    }
  }
  ~OutputAside() {
    std::fflush(stdout);
    if (before_ >= 0) {
      dup2(before_, STDOUT_FILENO);
      close(before_);
    }
  }
  OutputAside(const OutputAside&) = delete;
  OutputAside& operator=(const OutputAside&) = delete;

 private:
  int before_;
};

VerifiedRelease verifiedAside(const VerifyReleaseRequest& request, bool showsLog) {
  const OutputAside aside(showsLog);
  const LauncherLog log(showsLog);
  return verifyRelease(request);
}

struct VerifyReleaseArguments : TrustArguments {
  std::string place;
  std::string as;
};

int runVerifyRelease(const VerifyReleaseArguments& given, Reporter& reporter) {
  const Trusted trusted = trustedBy(given, reporter);
  if (!given.as.empty() && given.as.find_first_not_of("0123456789") != std::string::npos) {
    throw PackError("--as names an application.version, which is a whole number");
  }
  const VerifiedRelease verified = verifiedAside({given.place, trusted.application, trusted.channel,
                                                  trusted.keys, given.as, std::time(nullptr)},
                                                 reporter.showsDetail());
  nlohmann::ordered_json requests = nlohmann::ordered_json::array();
  for (const SourceRequest& request : verified.requests) {
    requests.push_back({{"name", request.name}, {"bytes", request.bytes}});
    reporter.line(request.name + ": " + sized(request.bytes));
  }
  for (const std::string& step : verified.steps) {
    reporter.result(step);
  }
  reporter.value("steps", nlohmann::ordered_json(verified.steps));
  reporter.value("requests", requests);
  reporter.value("bytes", static_cast<std::uint64_t>(verified.bytes));
  reporter.findings(verified.findings);
  reporter.result("loaded: " + sized(verified.bytes) + " in " +
                  std::to_string(verified.requests.size()) + " requests");
  return hasErrors(verified.findings) ? kFailed : kDone;
}

}  // namespace

VerifiedRelease verifyRelease(const VerifyReleaseRequest& request) {
  return Verification(request).run();
}

Command verifyReleaseCommand() {
  const auto given = std::make_shared<VerifyReleaseArguments>();
  std::vector<Argument> arguments = {{.name = "PLACE",
                                      .description = "a release folder, or its URL",
                                      .into = &given->place,
                                      .isRequired = true},
                                     {.name = "--as",
                                      .description = "the application.version that is installed "
                                                     "already; none without it",
                                      .into = &given->as}};
  for (Argument& argument : trustArguments(*given)) {
    arguments.push_back(std::move(argument));
  }
  return {"verify-release", "installs a release as a client would, and tells what it takes",
          "quillory-pack verify-release https://example.com/updates/ --as 11", std::move(arguments),
          [given](Reporter& reporter) { return runVerifyRelease(*given, reporter); }};
}

}  // namespace quillory::pack
