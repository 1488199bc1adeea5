// The launch-properties file, and the JVM options remembered from the last successful start.
// docs/formats/launch-properties.md and docs/formats/remembered-options.md have the bytes.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "formats/property_block.h"

namespace quillory {

/// What is known about a launch only when it happens.
struct LaunchFacts {
  std::string updateUrl;
  std::optional<std::string> dynamicUpdateUrl = {};  ///< if a parameter gave one
  std::string appFolder;
  /// What the property "jre_name" says: the name of the private JRE; in a compatibility check, by
  /// intent, the path of the `java` that is checked.
  std::string jreNameProperty;
  std::string launchedFromDynprops;
};

/// Adds the properties of a launch, and "url_req" when the user asked for a URL.
void addLaunchTimeProperties(const LaunchFacts& facts, PropertyBlock& block);

/// Reads the options of the file at `lsoPath` (empty: none is looked for) and adds them to `block`.
///
/// A file that is there but cannot be opened is tried again five times, with 500 seconds after each
/// failure. No failure is fatal: the result is then empty, and `block` is left as it was. With
/// `showsWaits` a window tells of the wait (NoticeCalls of support/platform.h).
std::vector<std::string> readRememberedOptions(const std::string& lsoPath, PropertyBlock& block,
                                               bool showsWaits = false);

/// The path of a new launch-properties file in `folder`, which is not made. The name holds the
/// milliseconds since the Unix epoch and the number of entries in `folder`, so it is new as soon as
/// one of the two has changed.
std::string newLaunchPropertiesPath(const std::string& folder);

/// Writes `block` to a new file in `folder` and returns its path.
///
/// A file that cannot be opened is tried again five times under new names, with 500 seconds after
/// each failure. Nothing, with an error in the log, when that was in vain or the content cannot be
/// written. With `showsWaits` a window tells of the wait.
std::optional<std::string> writeLaunchProperties(const PropertyBlock& block,
                                                 const std::string& folder,
                                                 bool showsWaits = false);

}  // namespace quillory
