// What a JRE folder holds: its tools, its version, its certificates.
#pragma once
#include <string>

namespace quillory {

/// <jreFolder>/Contents/Home/bin/java, made executable for everyone. The path comes also when
/// that failed, which is logged: the file need not exist yet.
std::string javaOf(const std::string& jreFolder);
/// The same for unpack200. Prints its way to standard output.
std::string unpack200Of(const std::string& jreFolder);

/// The second component of the version that the `java` prints on standard output when it is asked
/// for it ("8" for 1.8.0_202, "0" for 11.0.2, by intent), or "0".
std::string javaVersionOf(const std::string& java);
/// Whether that number is at least `requiredVersion`.
bool meetsVersionRequirement(const std::string& java, const std::string& requiredVersion);

/// Whether an installed JRE folder has what a start looks for: bin/java and lib/rt.jar.
bool isHealthyJre(const std::string& jreFolder);
/// Whether there is a `java` in a folder that is to become a JRE: a bundle, a JDK's bundle, or a
/// plain Java home; without a log line.
bool holdsJava(const std::string& folder);

/// Lets the JRE in `jreFolder` make its archive of shared classes anew; whether it can is not
/// examined.
void regenerateSharedArchive(const std::string& jreFolder);

/// Replaces the trust store of the JRE home by the file `source`. 0 when the copy is in its place,
/// else 1; 0 also when there is no such file, which leaves the JRE's own in place.
///
/// What is there stays until the copy is complete. While the home is on its way to its place,
/// `content` is where it is, and the log says `jreHome` all the same.
int replaceTrustStore(const std::string& source, const std::string& jreHome,
                      const std::string& content);
int replaceTrustStore(const std::string& source, const std::string& jreHome);

}  // namespace quillory
