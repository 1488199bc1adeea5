#include "launcher/bundle_paths.h"

#include "support/log.h"
#include "support/owned.h"

namespace quillory {

Executable locateExecutable(const std::string& exePath) {
  Executable exe;
  exe.pathAsPassed = exePath;
  char* const absolute = getAbsoluteExePath(exe.pathAsPassed.data());
  // A block of its own only where the path was relative.
  const OwnedText owned(absolute == exe.pathAsPassed.data() ? nullptr : absolute);
  exe.absolutePath = absolute;
  const OwnedText folder(getAbsoluteExeDir(absolute));
  exe.folder = folder.get();

  logMessage("[Extractor] The absolute wrapper path is %s\n", exe.absolutePath.c_str());
  logMessage("[Extractor] The executable name is %s\n", exe.pathAsPassed.c_str());
  logMessage("[Extractor] The executable dir is %s\n", exe.folder.c_str());
  return exe;
}

}  // namespace quillory
