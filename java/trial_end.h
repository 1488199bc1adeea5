// What the end of the application shows of its version: the line that the launcher adds to the file
// of a start that is judged later. docs/formats/update-trials.md has the file, which the updater
// makes and judges.
#pragma once
#include <string>

namespace quillory {

/// The path of the file that the updater makes for the start of `propertiesFile`, if it makes one;
/// "" where `ownFolder` has no folder for updates, so that nothing of the start is of use to
/// anybody.
std::string tryFileOf(const std::string& ownFolder, const std::string& propertiesFile);

/// Adds "ended <status>" to the file at `path`, if there is one; "" is none. Makes no file and
/// follows no link; failures are no reason for anything else. Allocates nothing, so that it may
/// be called while a JVM ends the process.
void noteEnd(const std::string& path, int status) noexcept;

}  // namespace quillory
