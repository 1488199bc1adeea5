// The update settings, once, for who reads, writes and shows them: how an installation looks for
// updates, in a file of the updater's archive. docs/formats/update-settings.md has the bytes.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/release_list_format.h"

namespace quillory {

/// The name of the file, in the updater's version folder. Without it nothing is ever updated.
inline constexpr char kUpdateSettingsFileName[] = "QuilloryUpdate";

/// The version of the format.
inline constexpr std::int64_t kUpdateSettingsVersion = 1;

/// The records in their order. Those of a group stand as often as the count in front of them says.
inline constexpr char kUpdateSettingsVersionRecord[] = "Update Settings VER";
inline constexpr char kUpdateChannelRecord[] = "Update Channel";
inline constexpr char kUpdateModeRecord[] = "Update Mode";
inline constexpr char kAtStartSecondsRecord[] = "At Start Seconds";
inline constexpr char kCheckHoursRecord[] = "Check Hours";
inline constexpr char kKeepVersionsRecord[] = "Keep Versions";
inline constexpr char kMirrorCountRecord[] = "Mirror Count";
inline constexpr char kMirrorUrlRecord[] = "Mirror URL";
inline constexpr char kUpdateKeyCountRecord[] = "Key Count";
inline constexpr char kUpdateKeyRecord[] = "Update Key";
/// These two end the file, or neither does.
inline constexpr char kUpdateUrlRecord[] = "Update URL";
inline constexpr char kRuntimeNameRecord[] = "Runtime Name";

/// Limits. Settings beyond them are refused, and their writer makes none.
inline constexpr std::size_t kMaxUpdateSettingsBytes = 128 * 1024;
inline constexpr std::int64_t kMaxAtStartSeconds = 600;
inline constexpr std::int64_t kMaxCheckHours = 24 * 365;
/// The newest and the one before it: with fewer there is no way back.
inline constexpr std::int64_t kMinKeepVersions = 2;
inline constexpr std::int64_t kMaxKeepVersions = 100;
inline constexpr std::int64_t kMaxMirrors = 10;
inline constexpr std::size_t kMaxMirrorUrlBytes = 4998;  ///< as that of the update URL in a tail

enum class UpdateMode {
  kBackground,  ///< looks, loads and installs beside, for the next start
  kAsk,         ///< looks and says so; the user decides
  kAtStart,     ///< before the application, with the splash, for so many seconds at most
  kManual,      ///< when the application or the user asks
  kOff,
};

/// Their names, in the order of the modes.
inline constexpr std::array<std::string_view, 5> kUpdateModeNames = {"background", "ask",
                                                                     "at-start", "manual", "off"};

/// The name of a mode.
constexpr std::string_view asText(UpdateMode mode) {
  return kUpdateModeNames[static_cast<std::size_t>(mode)];
}
/// The mode of that name; nothing when there is none.
constexpr std::optional<UpdateMode> updateModeOf(std::string_view name) {
  for (std::size_t i = 0; i < kUpdateModeNames.size(); ++i)
    if (kUpdateModeNames[i] == name) return static_cast<UpdateMode>(i);
  return std::nullopt;
}

/// What the file says.
struct UpdateSettings {
  std::string channel = kStandardChannel;
  UpdateMode mode = UpdateMode::kBackground;
  std::int64_t atStartSeconds = 20;
  std::int64_t checkHours = 24;
  std::int64_t keepVersions = 2;
  std::vector<std::string> mirrors{};  ///< tried in this order, behind the update URL in force
  std::vector<std::string> keys{};     ///< hexadecimal DER: the working one and the reserve
  /// Of an installation for all users, whose administrator can believe nothing that a start says:
  /// the update URL and the name of its runtime. "" otherwise.
  std::string updateUrl{};
  std::string runtimeName{};

  bool operator==(const UpdateSettings&) const = default;
};

/// Whether it can be a mirror: an address that begins with "https://" or "http://", without blanks
/// and control characters. Lists and archives are signed: http is enough for them.
constexpr bool isMirrorUrl(std::string_view url) {
  if (!url.starts_with("https://") && !url.starts_with("http://")) return false;
  for (const char c : url)
    if (static_cast<unsigned char>(c) <= 0x20 || static_cast<unsigned char>(c) >= 0x7F)
      return false;
  return url.size() <= kMaxMirrorUrlBytes;
}

}  // namespace quillory
