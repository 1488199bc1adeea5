// The archive of classes that makes an application's next starts faster. It is made on the user's
// machine, behind a good start, by the updater (updater/StartupArchive.java); here it is decided
// whether a start uses it. A JVM checks little of it: one that was cut kills the JVM, and one for
// other files costs it the archive of the runtime, too. docs/formats/startup-archive.md has the
// files.
#pragma once
#include <string>

#include "java/launch_command.h"

namespace quillory {

/// Of which application the archive is, and where.
struct ArchivePlace {
  std::string folder;             ///< that has the remembered options; "" for none to be trusted
  std::string javaHome;           ///< of the runtime
  std::string applicationFolder;  ///< path of the version folder
};

/// Adds to a command that is otherwise complete what has its JVM use the archive, where there is
/// one made of just these files, options and machine, and where no two starts with it have ended
/// badly in a row; else what has it list the classes that one can be made of. Nothing with a Java
/// below
/// 13. Notes that a start with the archive begins: the updater takes that back when it was good.
void addStartupArchive(const ArchivePlace& place, LaunchCommand& command);

}  // namespace quillory
