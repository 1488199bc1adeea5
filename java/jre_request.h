// What the steps that provide a JRE are told: each gets the parts that it needs.
#pragma once
#include <cstdio>
#include <functional>
#include <optional>
#include <string>

#include "formats/archive_trust.h"
#include "install/jre_name.h"
#include "support/exit_status.h"

namespace quillory {

/// Where JREs are installed, and what their folders are called.
struct JrePlace {
  std::string masterFolder;
  JreName name;
};

/// The JRE that travels in the tail.
struct EmbeddedJre {
  std::string version;        ///< empty: the tail has none
  std::FILE* tail = nullptr;  ///< stands on its entry; borrowed
  /// What its archive calls it, in a hardened bundle: the name that the bundle was packed with,
  /// whatever another one says under which it is installed.
  std::string name = {};
};

/// Where a JRE's version and archive are fetched from. docs/formats/version-file.md has the names.
struct JreServer {
  std::string url;                ///< effective, with its final '/'
  std::string versionFileFolder;  ///< where the version file is stored
};

/// What JRE archives are unpacked and verified with.
struct ArchiveTools {
  std::string lzmaTool;
  Rsa_key* key = nullptr;  ///< may be null; borrowed
  bool isHardened = false;

  /// What the archive of a JRE must prove.
  ArchiveTrust trustIn(const std::string& name, const std::string& version) const {
    return {key, isHardened, ArchiveIdentity{name, version, std::string(thisPlatform())}};
  }
};

/// What came of a step that provides something of a JRE.
template <typename Something>
struct JreOutcome {
  std::optional<Something> provided = {};
  /// Where nothing was: the status of the launcher, which cannot go on. The log says why.
  int exitStatus = kExitFailure;
};

/// Where system JREs are looked for, beside the search path.
struct SystemJrePlaces {
  /// The bundle of the Java applet plug-in.
  std::string appletPlugin = "/Library/Internet Plug-Ins/JavaAppletPlugin.plugin";
  /// The `java` of an automatic test, instead of the one in the path.
  std::string autoTestJava = "/opt/JRE_QYAutoTest/Contents/Home/bin/java";
};

/// Which JRE of the system will do.
struct SystemJreQuestion {
  std::string requiredJavaVersion;
  /// Asks the compatibility class of the updater in the folder of that name whether the application
  /// can use the `java` at that path.
  std::function<bool(const std::string& updaterFolder, const std::string& java)> isCompatible;
  bool isAutoTest = false;
  SystemJrePlaces places;
  /// Of a hardened bundle: an updater that has no launch file is not asked, but an older one.
  bool onlyWhole = false;
};

/// What a person is shown while a JRE is fetched; by default nothing.
struct FetchDisplay {
  void (*show)() = [] {};                    ///< the splash, in front
  void (*showIndefiniteProgress)() = [] {};  ///< its bar, without a percentage
  void (*takeDown)() = [] {};                ///< for good
};

}  // namespace quillory
