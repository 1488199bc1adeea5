// One start of the launcher: what is known of it so far. The driver's steps fill it in, in the
// order of its fields, and each reads what the ones before it have found.
#pragma once
#include <string>

#include "formats/property_block.h"
#include "formats/update_url.h"
#include "install/installation_lock.h"
#include "install/jre_name.h"
#include "launcher/bundle_paths.h"
#include "launcher/component_extraction.h"
#include "launcher/driver.h"
#include "launcher/dynamic_params.h"
#include "launcher/splash_override.h"
#include "launcher/update_decision.h"
#include "launcher/wrapper_tail.h"
#include "support/owned.h"

namespace quillory {

struct Start {
  CommandLine line;
  StartSurroundings surroundings;
  Executable exe;
  PropertyBlock properties;  ///< what the application is told
  DynamicParams params;
  OwnedFile tailStream;  ///< stands on the next archive, until there is nothing left to extract
  TailRecords tail;
  bool isSilent = false;
  UpdateUrl updateUrl;
  Rsa_key* key = nullptr;  ///< may stay null; never released
  std::string masterFolder;
  /// Where this start writes what is its user's: the master folder, unless only the administrator
  /// writes there.
  std::string ownFolder;
  JreName jreName;
  InstallationLock lock;  ///< held while something is installed

  /// The archives that come next in the tail, which have to be those of this component.
  TailArchives archivesOf(const std::string& component, const std::string& version) const;
  UpdateQuestion question() const;
  SplashOverride splashOverride() const { return {tail.canOverrideSplash, params.splashImage}; }
  bool showsUi() const { return !isSilent && !line.prepareOnly; }
  bool isHardenedForAll() const;
  /// Whether the administrator's rights are at work on what others could otherwise write to.
  bool isClosedToOthers() const;
};

/// Ends the process where a step could not be done, which has said so in the log: nothing can
/// follow it.
void endUnless(bool isDone);

/// Gives the splash its picture, and shows it where this start shows anything.
void showSplash(const Start& start, const std::string& picture);

}  // namespace quillory
