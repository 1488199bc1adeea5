// The temporary folder of a test program: nothing that it makes outlives it, not even when the
// program is killed.
#pragma once
#include <filesystem>

namespace quillory::testing {

/// This program's own folder below the temporary folder, which every user may write to. Made by the
/// first call, from then on it is TMPDIR for this process and its children; every failure to make
/// it is an exception.
///
/// It is removed at the end of the program. When the program has no time for that, because it
/// crashed or was killed, a guardian does it (guardian.sh), and ends every process that was left:
/// all descendants know the folder by the variable QUILLORY_TEST_FOLDER, or have their root folder
/// in it. The guardian is a process of its own, in a session of its own and nobody's child, so that
/// what ends the program's whole family leaves it alone.
const std::filesystem::path& ownFolder();

/// Removes a folder and everything in it, whatever its modes are, as far as this user may.
void removeFolder(const std::filesystem::path& folder);

}  // namespace quillory::testing
