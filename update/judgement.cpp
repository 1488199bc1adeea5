#include "update/judgement.h"

#include <algorithm>
#include <cstdlib>

#include "formats/archive_identity.h"
#include "formats/sha256.h"
#include "update/system_version.h"
#include "update/versions.h"

namespace quillory::update {
namespace {

constexpr std::int64_t kSecondsOfDay = 86400;
constexpr std::int64_t kPartsOfPercent = 100;
constexpr std::uint64_t kAllParts = 10000;
constexpr int kHexDigitsOfNumber = 16;

}  // namespace

std::string whyNotTaken(const ReleaseList& list, const ListQuestion& question) {
  if (list.application != question.application)
    return "it is of the application " + list.application;
  if (list.channel != question.channel) return "it is of the channel " + list.channel;
  if (!runsOn(list.platform, thisPlatform())) return "it is for " + list.platform;
  if (list.number < question.highestRelease)
    return "it is of release " + std::to_string(list.number) + ", and release " +
           std::to_string(question.highestRelease) + " has been seen already";
  if (list.number == question.highestRelease && list.issued < question.issuedBefore)
    return "it was issued before the one that has been seen already";
  return "";
}

bool isExpired(const ReleaseList& list, std::int64_t now) { return now > list.expires; }

std::int64_t shareAt(const Rollout& rollout, std::int64_t now) {
  const std::int64_t full = rollout.percent * kPartsOfPercent;
  if (now < rollout.start) return 0;
  if (rollout.days == 0) return full;
  const std::int64_t length = rollout.days * kSecondsOfDay;
  const std::int64_t passed = std::min(now - rollout.start, length);
  return full * passed / length;
}

bool isDrawn(const std::string& draw, const std::string& version, std::int64_t share) {
  const std::string hash = sha256Hex(draw + ':' + version);
  const std::uint64_t number =
      std::strtoull(hash.substr(0, kHexDigitsOfNumber).c_str(), nullptr, 16);
  return number % kAllParts < static_cast<std::uint64_t>(share);
}

bool isCritical(const ReleaseList& list, const ReleaseQuestion& question) {
  return question.isWithdrawn ||
         (question.installed >= 0 && question.installed < list.criticalBelow);
}

Admission admissionTo(const ReleaseList& list, const ReleaseQuestion& question) {
  const ReleaseComponent* const application = componentOf(list, kApplicationRole);
  if (!question.pin.empty() && (application == nullptr || application->version != question.pin))
    return Admission::kPinned;
  if (!meetsMinimum(question.systemVersion, list.minimumSystem)) return Admission::kSystemTooOld;
  if (question.installed >= 0 && question.installed < list.minimumFrom)
    return Admission::kStepFirst;
  const bool isAlwaysIn = question.installed < 0 || isCritical(list, question);
  const std::string version = application == nullptr ? "" : application->version;
  if (isAlwaysIn || isDrawn(question.draw, version, shareAt(list.rollout, question.now)))
    return Admission::kIn;
  return Admission::kLater;
}

}  // namespace quillory::update
