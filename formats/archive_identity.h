// What an archive is: its component, version and platform, in the path of its first entry, where
// the archive's signature covers them. An archive that only its file name tells from another one
// could be put in the other one's place, with its good signature. docs/formats/archive.md has the
// bytes.
#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace quillory {

/// What the path of the entry begins with. The entry is a file of length 0, which readers that do
/// not know it skip like any other.
inline constexpr std::string_view kIdentityBlockPrefix = "qyArcSpBlock_Component1;";

/// The platform of an archive that runs everywhere, as one that holds only Java does.
inline constexpr char kAnyPlatform[] = "any";

struct ArchiveIdentity {
  std::string component;  ///< the name that its version folder begins with
  std::string version;
  /// kAnyPlatform, a system ("linux", "macos") or a system and a processor ("linux-x86_64").
  std::string platform;

  bool operator==(const ArchiveIdentity&) const = default;
};

/// The path of the entry. What cannot stand in it is written as "%" and two hexadecimal digits, so
/// that it has no ';', '/' or '\' but those that separate.
std::string identityPath(const ArchiveIdentity& identity);

/// The identity in the path of an entry; nothing when identityPath() cannot have made it.
std::optional<ArchiveIdentity> parseIdentityPath(std::string_view path);

/// "JRE 17 (linux)": for people.
std::string asText(const ArchiveIdentity& identity);

/// The platform that this program was built for: "linux-x86_64", say, or "macos", where programs
/// for one processor run on the other one, too.
std::string_view thisPlatform();

/// Whether what was packed for `packedFor` runs on `platform`: it is for every one, for that one,
/// or for its system whatever the processor.
bool runsOn(std::string_view packedFor, std::string_view platform);

}  // namespace quillory
