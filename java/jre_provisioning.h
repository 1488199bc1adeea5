// Getting a JRE: from the wrapper tail, from the system, or from the update URL.
#pragma once
#include <string>

#include "java/jre_request.h"

namespace quillory {

struct JreRequest {
  JrePlace place;
  EmbeddedJre embedded;
  SystemJreQuestion system;
  JreServer server;
  ArchiveTools tools;
  FetchDisplay display;  ///< of a silent or prepare-only run: the default
  std::string caCerts;   ///< override trust store; need not exist
};

/// Provides the JRE, completes it (bundle shape, trust store, modes) and returns the path of its
/// bundle. Nothing when there is no JRE to be had, or it could not be extracted.
///
/// The JRE of the tail is always installed, over what is there. Without one, a healthy JRE of that
/// name that is installed is used; else a system JRE is copied; else one is downloaded.
JreOutcome<std::string> provisionJre(const JreRequest& request);

}  // namespace quillory
