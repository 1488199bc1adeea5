// Property lists of bundles, as XML.
#pragma once
#include <string>
#include <vector>

#include "packager/config/config.h"

namespace quillory::pack {

/// What only macOS asks of an application.
struct MacPlist {
  /// The system's dark appearance would reach the frames of windows whose insides Java paints
  /// light.
  bool isLightOnly = false;
  /// The one server that may be asked without encryption, which the system else forbids; "" for
  /// none.
  std::string insecureHost{};
  bool mayAskAnyHost = false;                ///< likewise, where the server is not known yet
  std::vector<DocumentConfig> documents{};   ///< their icons are names of files in Resources
  std::vector<std::string> architectures{};  ///< of the runtime, the best first; none: unknown
  Parameters more{};  ///< texts, and "true" and "false" for flags, by their keys
};

/// The keys that `config` asks for, in a bundle for macOS.
MacPlist macPlistOf(const Config& config);

/// Whether applicationInfoPlist() itself writes this key.
bool isKeyOfOurs(const std::string& key);

/// Contents/Info.plist of the application's bundle.
std::string applicationInfoPlist(const ApplicationConfig& application, const std::string& iconFile,
                                 const MacPlist& mac = {});

/// The files in Resources that it names as icons of documents.
std::vector<std::string> documentIconsIn(const std::string& plist);

/// Whether a text is what applicationInfoPlist() makes of some configuration without keys of its
/// own, to the byte.
bool isApplicationInfoPlist(const std::string& text);

/// Contents/Info.plist of a runtime's bundle; `executable` may be empty.
std::string runtimeInfoPlist(const std::string& name, const std::string& version,
                             const std::string& executable);

}  // namespace quillory::pack
