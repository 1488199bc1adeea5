// A JRE that the system already has, copied when the application can use it.
#pragma once
#include <optional>
#include <string>

#include "java/jre_request.h"

namespace quillory {

/// What a copied JRE has for a version: any real one is newer.
inline constexpr char kSystemJreVersion[] = "00000000000";

/// The folder of the JRE that a `java` path belongs to, by the last "bin" anywhere in the path once
/// all links are followed; "" for a path that names no folder.
std::string jreFolderOfJava(const std::string& java);

/// What came of a search.
struct SystemJreSearch {
  std::optional<std::string> copy;  ///< the temporary folder that holds the JRE, if there is one
  /// No updater is installed that could be asked, which is logged: the start cannot go on.
  bool isCutShort = false;
};

/// Copies a system JRE with java, unpack200, the required version and the consent of the newest
/// updater's compatibility class to a new temporary folder of the master folder.
SystemJreSearch copySystemJre(const std::string& masterFolder, const SystemJreQuestion& question);

}  // namespace quillory
