// Where an application is installed: in the applications' directory of all users or of this one.
//
//   <shared directory>/Quillory-<App Name>/     the master folder; install/version_folders.h has
//                                               what is in it
#pragma once
#include <string>

namespace quillory {

/// Who the user is. Assigned to by tests only, through ScopedReplace.
struct UserCalls {
  /// The home folder that the password database names for this user, whatever HOME says; "" when
  /// it knows none.
  std::string (*homeFolder)();
};
extern UserCalls userCalls;

/// The directory that all users ("perm_all") or this user (anything else) keep applications in; a
/// new block of kPathCapacity bytes, free() it. Null when this user has no home folder. The user's
/// directory is created, with its parents; that of all users is not.
char* locateSharedDirectory(const char* installType);

/// <shared directory>/Quillory-<appName>
std::string masterFolderFor(const std::string& sharedDirectory, const std::string& appName);

}  // namespace quillory
