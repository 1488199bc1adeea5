// The wrapper tail's records, once, for who reads, writes and shows them.
// docs/formats/wrapper-tail.md has the bytes.
#pragma once
#include <array>
#include <string>

#include "formats/archive_format.h"
#include "formats/record_stream.h"

namespace quillory {

/// The eleven records, in the order in which they stand in the tail. One that is missing is "".
struct TailRecords {
  std::string appName;
  std::string appVersion;  ///< empty: no application in the tail
  std::string jreVersion;  ///< empty: no JRE in the tail
  std::string guVersion;   ///< empty: no updater in the tail, it only launches
  std::string minSplashMs;
  std::string signaturePublicKey;  ///< hexadecimal
  std::string canOverrideSplash;
  std::string installType;
  std::string silentParameter;
  std::string requiredJavaVersion;
  std::string updateUrl;  ///< or "D": the dynamic one

  /// Of a tail that was read: whether it goes on as far as that record.
  bool hasSignaturePublicKey = true;
};

/// A record: its name for people, what its reader takes, and where its text is kept.
struct TailRecord {
  const char* name;
  int capacity;
  std::string TailRecords::*text;
};

inline constexpr int kPublicKeyCapacity = 8192;
inline constexpr int kUpdateUrlCapacity = 5000;

inline constexpr std::array<TailRecord, 11> kTailRecords = {{
    {"App Name", kDefaultCapacity, &TailRecords::appName},
    {"App Version", kDefaultCapacity, &TailRecords::appVersion},
    {"JRE Version", kDefaultCapacity, &TailRecords::jreVersion},
    {"GU Version", kDefaultCapacity, &TailRecords::guVersion},
    {"Min Splash MS", kDefaultCapacity, &TailRecords::minSplashMs},
    {"Signature Public Key", kPublicKeyCapacity, &TailRecords::signaturePublicKey},
    {"Can Override Splash", kDefaultCapacity, &TailRecords::canOverrideSplash},
    {"Install Type", kDefaultCapacity, &TailRecords::installType},
    {"Silent Parameter", kDefaultCapacity, &TailRecords::silentParameter},
    {"Required Java Version", kDefaultCapacity, &TailRecords::requiredJavaVersion},
    {"Update URL", kUpdateUrlCapacity, &TailRecords::updateUrl},
}};

/// The entries behind the records, in order: the tool that decompresses the others, the splash
/// picture, those of the updater, where "JRE Version" is not empty one of the JRE, and where
/// "App Version" is not empty those of the application.
inline constexpr const char* kLzmaToolName = kPackedWith.tool;
inline constexpr char kSplashPictureName[] = "nativesplash.png";

/// The same picture with twice as many pixels each way, beside it; only where there is one.
inline constexpr char kDoubleSplashPictureName[] = "nativesplash@2x.png";
inline constexpr char kTrustStoreName[] = "cacerts";
/// What quillory-pack calls the archives of updater, JRE and application: packedArchiveName() of
/// these.
inline constexpr char kUpdaterPart[] = "GU";
inline constexpr char kJrePart[] = "JRE";
inline constexpr char kApplicationPart[] = "App";
inline constexpr int kUpdaterEntries = 3;
inline constexpr int kApplicationEntries = 2;

/// Where a tail stands that is a file of its own, in the bundle's Resources.
inline constexpr char kTailFileName[] = "Tail";

}  // namespace quillory
