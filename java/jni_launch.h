// The Java application inside the launcher's own process.
#pragma once
#include <jni.h>

namespace quillory {

struct ThreadCalls {
  bool (*isMainThread)();
};
extern ThreadCalls threadCalls;

/// The dlopen() handle of the JVM library of `jreHome`, or null.
void* loadJVMLibrary(const char* jreHome);

/// "-Djava.class.path=" and the entries joined with ':', or "" without entries; free() it.
char* getClassPathFor(int count, const char* const* entries);

void CallStaticVoidMethod(JNIEnv* env, jclass clazz, jmethodID method, ...);

/// Runs `mainClass` and returns 0 after main() has run and the JVM is gone; 1 on any failure
/// before main() was called. An exception that main() throws is printed and still gives 0.
int launchJavaJNI(const char* mainClass, const char* jreHome, int optionCount,
                  const char* const* options, int classPathCount, const char* const* classPath,
                  int argumentCount, const char* const* arguments);

}  // namespace quillory
