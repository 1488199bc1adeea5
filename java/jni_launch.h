// The Java application inside the launcher's own process.
#pragma once
#include <jni.h>

namespace quillory {

/// The dlopen() handle of the JVM library of `jreHome`, or null. It stays open: a JVM cannot be
/// unloaded.
void* loadJVMLibrary(const char* jreHome);

/// "-Djava.class.path=" and the entries joined with ':', or "" without entries; free() it.
char* getClassPathFor(int count, const char* const* entries);

void CallStaticVoidMethod(JNIEnv* env, jclass clazz, jmethodID method, ...);

/// Runs `mainClass` ("com.example.Main") on this thread, in a JVM made for it, and returns 0 after
/// main() has run, all other threads of the application have ended and the JVM is gone; 1 on any
/// failure before main() was called. An exception that main() throws is printed and still gives 0.
///
/// A process can do this once, and after a failure that came behind the creation of the JVM not
/// again. The log file is closed before main() is called.
int launchJavaJNI(const char* mainClass, const char* jreHome, int optionCount,
                  const char* const* options, int classPathCount, const char* const* classPath,
                  int argumentCount, const char* const* arguments);

}  // namespace quillory
