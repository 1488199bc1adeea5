// What is known about the updates of an installation from one run to the next.
// docs/formats/update-state.md has the bytes. Written by quillory-update alone, with its lock held;
// the application reads it through its API.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillory::update {

inline constexpr std::int64_t kStateVersion = 1;
inline constexpr std::size_t kMaxStateBytes = 1024 * 1024;
/// Channels of which the highest release number is remembered.
inline constexpr std::size_t kMaxChannels = 20;

enum class Phase {
  kNone,
  kChecking,
  kAvailable,
  kDownloading,
  kStaged,
  kFailed,
  kFrozen,
  kOff,
};
/// "NONE", "CHECKING" and so on.
const char* nameOf(Phase phase);

struct Offer {
  std::int64_t release = 0;  ///< 0: nothing is offered
  std::string version{};     ///< of the application
  std::string shownVersion{};
  std::int64_t size = 0;  ///< bytes to load
  bool isCritical = false;
  std::string notes{};

  bool operator==(const Offer&) const = default;
};

/// Times are seconds since 1970; 0 is never.
struct State {
  std::int64_t highestRelease = 0;  ///< of the channel that was asked last
  std::string draw{};               ///< 32 hexadecimal digits, made once; for rollouts
  std::int64_t lastCheck = 0;
  std::int64_t lastAnswer = 0;  ///< when the last good list came
  std::string answerETag{};
  std::vector<std::string> keys{};  ///< in hexadecimal; none: those that the bundle came with
  Phase phase = Phase::kNone;
  std::string reason{};  ///< of a failure, for people
  Offer offer{};
  std::string stagedVersion{};    ///< of the application that waits for its place
  std::string previousVersion{};  ///< that was installed before the last update
  std::string skippedVersion{};
  std::int64_t remindAfter = 0;
  std::vector<std::string> withdrawn{};  ///< versions that are not to be started beside another
  std::int64_t failures = 0;             ///< in a row
  std::int64_t nextCheck = 0;
  std::string chosenChannel{};  ///< by the user; "": that of the settings
  std::string askedChannel{};   ///< that highestRelease is of
  /// Each channel's highest release number, but the asked one's.
  std::vector<std::pair<std::string, std::int64_t>> otherChannels{};

  bool operator==(const State&) const = default;
};

/// The state in `updatesFolder`; a new one where there is none, or it is damaged (logged). What is
/// lost then is what it remembered: the next list is taken as a first one is.
State readState(const std::string& updatesFolder);

/// Replaces the file in one step, flushed. False, with a line in the log, when it cannot be
/// written.
bool writeState(const State& state, const std::string& updatesFolder);

/// The bytes, and back; nothing for what is damaged.
std::string bytesOf(const State& state);
std::optional<State> stateOf(const std::string& bytes);

/// Makes `channel` the asked one, with the release number that was seen there.
void askFor(State& state, const std::string& channel);

}  // namespace quillory::update
