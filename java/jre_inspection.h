// What a JRE folder holds: its tools, its version, its certificates. Paths come as new blocks of at
// least kPathCapacity bytes, to be released with free().
#pragma once

namespace quillory {

/// <jreFolder>/Contents/Home/bin/java, made executable for everyone. The path comes also when
/// that failed, which is logged: the file need not exist yet.
char* getJavaExecutable(const char* jreFolder);
/// The same.
char* getJavaCmdlineExecutable(const char* jreFolder);
/// The same for unpack200. Prints its way to standard output.
char* getUnpack200Executable(const char* jreFolder);

/// The second component of the version that `java -version` prints on standard output ("8" for
/// 1.8.0_202, "0" for 11.0.2, by intent), or "0"; a new block, free() it. Never null.
char* getJavaVersion(const char* javaPath);
/// Whether that number is at least `requiredVersion`; never for null.
bool jreMatchesVersionRequirement(const char* javaPath, const char* requiredVersion);

/// Whether an installed JRE folder has what a start looks for: bin/java and lib/rt.jar.
bool isHealthyJre(const char* jreFolder);
/// Whether there is a `java` in a folder that is to become a JRE: a bundle, a JDK's bundle, or a
/// plain Java home; without a log line.
bool holdsJava(const char* folder);

/// Lets the JRE in `jreFolder` make its archive of shared classes anew; whether it can is not
/// examined.
void regenerateSharedArchive(const char* jreFolder);

/// Replaces the trust store of the JRE home by `source`. The result of the copy; 0 when there is no
/// `source`, which leaves the JRE's own in place.
int overrideCACerts(const char* source, const char* jreHome);

/// Lets the version patcher at `tool` write `name` and version 4.0.0.0 into `file`; logs its exit
/// status.
void callVerPatchOn(const char* tool, const char* file, const char* name);

}  // namespace quillory
