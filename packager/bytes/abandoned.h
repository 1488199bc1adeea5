// What a run leaves that was killed before it could clean up: files and folders named
// ".unfinished-" and six letters or digits, as OutputFile and WorkFolder name what is not complete.
// While one of these is in use its owner holds a lock on it (flock), which ends with the process
// however that ends.
#pragma once
#include <string>

namespace quillory::pack {

/// Removes what such a run of this user has left in `folder` ("" is the working folder), and
/// nothing that is locked. What cannot be removed stays, without a word: it is in nobody's way.
void removeAbandoned(const std::string& folder);

/// Locks an unfinished folder that was just made; the lock lasts until the descriptor is closed. -1
/// when it cannot be locked, or is no longer there.
int lockUnfinished(const std::string& path);

}  // namespace quillory::pack
