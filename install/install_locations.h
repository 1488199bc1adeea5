// Where an application is installed: in the applications' directory of all users or of this one.
//
//   <shared directory>/Quillory-<App Name>/     the master folder; install/version_folders.h has
//                                               what is in it
#pragma once
#include <functional>
#include <optional>
#include <string>

namespace quillory {

/// The home folder that the password database names for this user, whatever HOME says; "" when it
/// knows none.
std::string homeFolderOfUser();

/// The directory that all users ("perm_all") or this user (anything else) keep applications in.
/// Nothing when the user has no home folder. The user's directory is created, with its parents;
/// that of all users is not.
std::optional<std::string> sharedDirectoryFor(
    const std::string& installType,
    const std::function<std::string()>& homeFolder = homeFolderOfUser);

/// Whether that is the directory of all users.
bool isForAllUsers(const std::string& installType);

/// Where a start keeps what it writes, its log and its settings, when it may not write where the
/// application is installed: a master folder in the user's own directory, made as that is. Where
/// he has no home that he can write to, a new folder in `temporaryFolder` for him alone; "" where
/// not even that can be made.
std::string ownFolderFor(const std::string& home, const std::string& appName,
                         const std::string& temporaryFolder = "/tmp");

/// A new folder in `parent` that only this user can look into; "" when none can be made.
std::string makePrivateFolder(const std::string& parent);

/// <shared directory>/Quillory-<appName>
std::string masterFolderFor(const std::string& sharedDirectory, const std::string& appName);

}  // namespace quillory
