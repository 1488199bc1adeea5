// What a JRE folder holds: its tools, its version, its certificates.
#pragma once

namespace quillory {

/// <jreFolder>/Contents/Home/bin/java, made executable for everyone; a new block, free() it.
char* getJavaExecutable(const char* jreFolder);
char* getJavaCmdlineExecutable(const char* jreFolder);
/// The same for unpack200. Prints its way to standard output.
char* getUnpack200Executable(const char* jreFolder);

/// The second component of the version that `java -version` prints on standard output ("8" for
/// 1.8.0_202, "0" for 11.0.2, by intent), or "0"; a new block, free() it.
char* getJavaVersion(const char* javaPath);
bool jreMatchesVersionRequirement(const char* javaPath, const char* requiredVersion);

/// Replaces the trust store of the JRE home by `source`, where that exists. The copy's result.
int overrideCACerts(const char* source, const char* jreHome);

void callVerPatchOn(const char* tool, const char* file, const char* name);

}  // namespace quillory
