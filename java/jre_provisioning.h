// Getting a JRE: from the wrapper tail, from the system, or from the update URL.
#pragma once
#include <cstdio>
#include <string>

#include "formats/archive_signature.h"
#include "formats/property_block.h"

namespace quillory {

/// What a person is shown while a JRE is fetched; by default nothing.
struct FetchDisplay {
  void (*show)() = [] {};                    ///< the splash, in front
  void (*showIndefiniteProgress)() = [] {};  ///< its bar, without a percentage
  void (*takeDown)() = [] {};                ///< for good
};

struct JreRequest {
  std::string masterFolder;
  std::string jreName;
  std::string embeddedVersion;      ///< of the JRE in the tail; empty for an online installer
  std::string requiredJavaVersion;  ///< "Required Java Version" of the tail
  std::string updateUrl;            ///< effective, with its final '/'
  std::string versionFileFolder;    ///< where the version file is stored: the updater's folder
  std::string lzmaTool;
  std::string caCerts;        ///< override trust store; need not exist
  std::FILE* tail = nullptr;  ///< stands on the JRE's entry, where there is one
  Rsa_key* key = nullptr;     ///< may be null
  FetchDisplay display;       ///< of a silent or prepare-only run: the default
  bool isAutoTest = false;
  /// For the compatibility class of the installed updater (see launch_flow.h).
  const PropertyBlock* properties = nullptr;
  int argCount = 0;
  char** args = nullptr;
  std::string tailUpdateUrl;  ///< the tail's "Update URL" text
  const char* dynamicUpdateUrl = nullptr;
  std::string absoluteExePath;
};

/// Provides the JRE, completes it (bundle shape, trust store, modes) and returns the path of its
/// bundle. Ends the process with status 1 when there is no JRE to be had.
///
/// The JRE of the tail is always installed, over what is there. Without one, a healthy JRE of that
/// name that is installed is used; else a system JRE is copied; else one is downloaded.
std::string provisionJre(const JreRequest& request);

}  // namespace quillory
