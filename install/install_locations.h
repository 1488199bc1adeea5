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

/// <shared directory>/Quillory-<appName>
std::string masterFolderFor(const std::string& sharedDirectory, const std::string& appName);

}  // namespace quillory
