#include "packager/config/update_lint.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "formats/tail_format.h"
#include "packager/config/parameter_rules.h"

namespace quillory::pack {
namespace {

// What counts only for installations that look for updates by themselves.
constexpr const char* kClientKeys[] = {
    "update.at-start-seconds", "update.check-hours",  "update.keep-versions",
    "update.mirrors",          "update.reserve-key",  "update.next-keys",
    "update.minimum-system",   "update.minimum-from", "update.stepping-stone",
    "update.critical-below",   "update.rollout",      "update.notes",
    "update.expires-days",     "update.deltas",       "signing.next-key"};

// "", "13" or "10.15.7".
bool isSystemVersion(const std::string& text) {
  const auto isDigit = [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isDotBetween =
        text[i] == '.' && i > 0 && isDigit(text[i - 1]) && i + 1 < text.size();
    if (!isDigit(text[i]) && !isDotBetween) {
      return false;
    }
  }
  return true;
}

class UpdateLinter {
 public:
  explicit UpdateLinter(const Config& config) : config_(config), update_(config.update) {}

  Findings run() {
    online();
    if (!update_.hasClient) {
      keysWithoutClient();
      return std::move(findings_);
    }
    url();
    channel();
    mirrors();
    keys();
    atStart();
    release();
    return std::move(findings_);
  }

 private:
  void add(Severity severity, const char* rule, const std::string& key, const std::string& what,
           const std::string& advice) {
    findings_.push_back({severity, rule, key + ' ' + what, config_.placeOf(key), advice});
  }

  void online() {
    if (config_.bundle.isOnline && !update_.hasClient) {
      add(Severity::kError, "online", "bundle.online",
          "makes a bundle without an application, and nothing in it would fetch one",
          "mode = \"background\" in [update]");
    }
  }

  void keysWithoutClient() {
    for (const char* key : kClientKeys) {
      if (config_.places.count(key) != 0) {
        add(Severity::kWarning, "no-effect", key,
            "has no effect here: installations do not look for updates by themselves",
            "mode = \"background\" in [update], or leave it out");
      }
    }
  }

  void url() {
    if (update_.urlKind == UpdateUrlKind::kOff && update_.mode != UpdateMode::kOff) {
      findings_.push_back({Severity::kError, "update-url",
                           "[update] has no url, so there is nowhere to look for updates",
                           config_.placeOf("update"), "url = \"https://example.com/updates/\""});
    }
  }

  void channel() {
    if (!isChannelName(update_.channel)) {
      add(Severity::kError, "channel", "update.channel",
          "is no name of a channel: a file is named after it",
          "use letters, digits and \"._-\", 50 at most: channel = \"beta\"");
    }
  }

  void mirrors() {
    if (update_.mirrors.size() > std::size_t{kMaxMirrors}) {
      add(Severity::kError, "range", "update.mirrors",
          "has more than " + std::to_string(kMaxMirrors) + " entries", "leave some out");
    }
    for (const std::string& mirror : update_.mirrors) {
      if (const auto flaw =
              flawOfUpdateUrl({"update.mirrors", config_.placeOf("update.mirrors")}, mirror)) {
        findings_.push_back(*flaw);
      } else if (mirror.starts_with("http://")) {
        add(Severity::kWarning, "plain-http", "update.mirrors",
            "has one of plain http: anybody on the way can see and hold back what is downloaded",
            "use https://");
      }
    }
  }

  void keys() {
    if (update_.reserveKey.empty()) {
      findings_.push_back(
          {Severity::kWarning, "no-reserve-key",
           "[update] has no reserve-key: if the signing key is lost or stolen, no update can ever "
           "be signed for the installations of this release",
           config_.placeOf("update"),
           "quillory-pack keygen --reserve reserve.pem, then reserve-key = "
           "\"reserve.public.pem\""});
    }
    if (update_.nextKeys.size() > std::size_t{kMaxListKeys}) {
      add(Severity::kError, "range", "update.next-keys",
          "has more than " + std::to_string(kMaxListKeys) + " keys", "leave some out");
    }
    if (!config_.signing.nextKey.empty() && update_.nextKeys.empty()) {
      add(Severity::kError, "next-keys", "signing.next-key",
          "signs as well, and update.next-keys names no keys that count from then on",
          "next-keys = [\"" + config_.signing.nextKey + "\", \"reserve.public.pem\"] in [update]");
    }
  }

  void atStart() {
    if (update_.mode != UpdateMode::kAtStart &&
        config_.places.count("update.at-start-seconds") != 0) {
      add(Severity::kWarning, "no-effect", "update.at-start-seconds",
          "counts for mode = \"at-start\" only", "choose that mode, or leave it out");
    }
  }

  void release() {
    const ReleaseConfig& release = update_.release;
    if (!isSystemVersion(release.minimumSystem)) {
      add(Severity::kError, "system-version", "update.minimum-system", "is no version of a system",
          "write it as in minimum-system = \"10.15\"");
    }
    if (release.minimumFrom > 0 && release.steppingStone == 0) {
      add(Severity::kError, "stepping-stone", "update.minimum-from",
          "keeps older installations from this release, and no stepping-stone leads them there",
          "stepping-stone = N, the number of a release that they can take");
    }
    if (release.steppingStone > 0 && release.minimumFrom == 0) {
      add(Severity::kWarning, "no-effect", "update.stepping-stone",
          "has no effect: every installation takes this release as it is",
          "minimum-from = N, the oldest version that can, or leave it out");
    }
    if (!release.rollout.empty() && !parseRollout(release.rollout)) {
      add(Severity::kError, "rollout", "update.rollout", "is neither a part nor a time",
          "rollout = \"25%\", or rollout = \"7 days\"");
    }
  }

  const Config& config_;
  const UpdateConfig& update_;
  Findings findings_;
};

}  // namespace

Findings lintUpdates(const Config& config) { return UpdateLinter(config).run(); }

}  // namespace quillory::pack
