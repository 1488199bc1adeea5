// Options that a Java virtual machine gets from its runtime at every start, whoever starts it: what
// must be known before the first class is loaded has no other way into the launcher's own process.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "packager/content/jar_reader.h"

namespace quillory::pack {

/// An option of a main jar's manifest.
struct ManifestOption {
  std::string module;  ///< which it is about; "" for none
  std::string option;
};

/// What a runtime is to pass on.
struct RuntimeOptions {
  std::vector<std::string> given;     ///< always
  std::vector<ManifestOption> asked;  ///< as far as it has their modules
  /// The module of the application, in one of its jars, that all its modules have to be linked for.
  std::string module = {};
};

/// What `java -jar` does for a main jar by its manifest, as options: Add-Exports, Add-Opens and
/// Enable-Native-Access. Values that `java -jar` passes over are passed over.
std::vector<ManifestOption> manifestOptions(const Jar& mainJar);

/// Those that are about one of `modules`, or about none: the JVM complains at each start about a
/// module that a runtime does not have, where `java -jar` says nothing.
std::vector<std::string> optionsAbout(const std::vector<ManifestOption>& options,
                                      const std::vector<std::string>& modules);

/// All of them in one text, as a runtime keeps them. Throws PackError for an option that holds both
/// kinds of quotes, which no text can hold, or a line break.
std::string optionText(const std::vector<std::string>& options);

/// The names in what `java --list-modules` prints, a module a line ("java.base@17.0.9").
std::vector<std::string> modulesListed(std::string_view printed);

}  // namespace quillory::pack
