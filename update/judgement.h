// What a signed release list means for one installation: the rules, without network and files.
#pragma once
#include <cstdint>
#include <string>

#include "formats/release_list.h"

namespace quillory::update {

/// What a list is held against.
struct ListQuestion {
  std::string application{};
  std::string channel{};
  std::int64_t highestRelease = 0;  ///< that was seen on this channel
  std::int64_t issuedBefore = 0;    ///< when the list that was kept was issued; 0 without one
};

/// Why the list is not taken, in words; "" when it is. Its expiry is not asked: an expired list
/// that is newer than what was seen is still news.
std::string whyNotTaken(const ReleaseList& list, const ListQuestion& question);

/// Whether the list is older than its issuer lets it become.
bool isExpired(const ReleaseList& list, std::int64_t now);

/// The part of all installations, in hundredths of a percent, that a release is for at that time.
std::int64_t shareAt(const Rollout& rollout, std::int64_t now);

/// Whether an installation with that draw is among them. It stays among them when a list is issued
/// anew, or its share grows: what counts is the version of the application that is offered.
bool isDrawn(const std::string& draw, const std::string& version, std::int64_t share);

/// What of the installation decides whether it gets a release.
struct ReleaseQuestion {
  long installed = -1;  ///< number of the application's version; -1: none that is to be started
  bool isWithdrawn = false;  ///< the newest installed one
  std::string draw{};
  std::string systemVersion{};
  std::string pin{};
  std::int64_t now = 0;
};

enum class Admission {
  kIn,
  kLater,   ///< the rollout has not come to it
  kPinned,  ///< it stays at another version
  kSystemTooOld,
  kStepFirst,  ///< it is older than the release can be put upon: the stepping stone comes first
};

bool isCritical(const ReleaseList& list, const ReleaseQuestion& question);
Admission admissionTo(const ReleaseList& list, const ReleaseQuestion& question);

}  // namespace quillory::update
