// The copy of a JRE's `java` that carries the application's name, so that process lists show that
// name and not "java".
#pragma once
#include <string>

namespace quillory {

/// Makes `binFolder`/`appName`, unless it exists, as a copy of `binFolder`/java that everyone may
/// run, and returns its path. It gets its name when it is complete. A failure is logged, and the
/// path is then that of a file that does not exist; where only trusted folders are used (see
/// file_modes.h), that of `java`: a user who may not write there still starts.
///
/// An `appName` that is no plain file name ("", ".", "..", or with a '/') would lead outside the
/// folder. That is logged as an error, and the result is the path of `java` itself.
std::string provideAppExecutable(const std::string& binFolder, const std::string& appName);

}  // namespace quillory
