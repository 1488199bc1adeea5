// A JRE that the system already has, copied when the application can use it.
#pragma once
#include <string>

#include "java/jre_provisioning.h"

namespace quillory {

/// Where system JREs are looked for, beside the search path. Assigned to by tests only.
struct SystemJrePlaces {
  const char* appletPlugin;  ///< the bundle of the Java applet plug-in
  const char* autoTestJava;  ///< the `java` of an automatic test, instead of the one in the path
};
extern SystemJrePlaces systemJrePlaces;

/// What a copied JRE has for a version: any real one is newer.
inline constexpr char kSystemJreVersion[] = "00000000000";

/// The folder of the JRE that a `java` path belongs to, by the last "bin" anywhere in the path once
/// all links are followed; "" for a path that names no folder.
std::string jreFolderOfJava(const std::string& java);

/// Copies a system JRE with java, unpack200, the required version and the consent of the updater's
/// compatibility class to a new temporary folder, whose path is returned; "" when there is none.
/// Ends the process with status 1 when no updater is installed that could be asked.
std::string copySystemJre(const JreRequest& request);

}  // namespace quillory
