#include "launcher/start.h"

#include <unistd.h>

#include <cstdlib>

#include "install/install_locations.h"
#include "support/exit_status.h"
#include "support/log.h"
#include "ui/splash.h"

namespace quillory {

TailArchives Start::archivesOf(const std::string& component, const std::string& version) const {
  return {tailStream.get(), key, params.isHardened,
          ArchiveIdentity{component, version, std::string(thisPlatform())}};
}

UpdateQuestion Start::question() const {
  return {masterFolder,   tail.appName,    jreName.text(),
          tail.guVersion, tail.appVersion, params.isHardened};
}

bool Start::isHardenedForAll() const {
  return params.isHardened && isForAllUsers(tail.installType);
}

bool Start::isClosedToOthers() const {
  return geteuid() == 0 && (line.prepareOnly || isHardenedForAll());
}

void endUnless(bool isDone) {
  if (!isDone) std::exit(kExitFailure);
}

void showSplash(const Start& start, const std::string& picture) {
  logMessage("[Extractor] Configuring splash\n");
  splash::configureSplash(picture.c_str());
  logMessage("[Extractor] Showing splash\n");
  if (start.showsUi()) splash::showSplash();
  splash::setProgress(splash::kProgressIndefinite);
}

}  // namespace quillory
