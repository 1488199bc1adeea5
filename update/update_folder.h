// What quillory-update keeps of an installation, in the folder of its user (install_locations.h),
// which for most installations is the master folder. docs/formats/update-state.md tells of it.
//
//   QYUpdates/state          see update/state.h
//   QYUpdates/releases       the release list that was taken last, as it came
//   QYUpdates/lock           see update/update_lock.h
//   QYUpdates/downloads/     files on their way: <SHA-256>.part, and where each comes from
//   QYUpdates/staging/       see update/staged.h
//   QYUpdates/trials, try-*  written by the updater, which judges versions
//   QYUpdates/holds/         a file for each version folder in use, of application, updater and
//                            runtime, locked by fcntl(2) as long as the application runs
#pragma once

namespace quillory::update {

inline constexpr char kUpdatesFolder[] = "QYUpdates";
inline constexpr char kStateFile[] = "state";
inline constexpr char kReleasesFile[] = "releases";
inline constexpr char kLockFile[] = "lock";
inline constexpr char kDownloadsFolder[] = "downloads";
inline constexpr char kStagingFolder[] = "staging";
inline constexpr char kTrialsFile[] = "trials";
inline constexpr char kHoldsFolder[] = "holds";

/// In a version folder that quillory-update has installed: the SHA-256 of the plain archive that it
/// was unpacked from, and a line end.
inline constexpr char kArchiveHashFile[] = "QuilloryArchive";

}  // namespace quillory::update
