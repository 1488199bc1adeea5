// The Java application inside the launcher's own process.
#pragma once
#include <jni.h>

#include <string>
#include <vector>

namespace quillory {

/// What runs inside this process.
struct JavaInProcess {
  std::string mainClass;  ///< "com.example.Main"
  std::string jreHome;
  std::vector<std::string> jvmOptions;
  std::vector<std::string> classPath;
  std::vector<std::string> arguments;  ///< of main()
};

/// The dlopen() handle of the JVM library of `jreHome`, or null. It stays open: a JVM cannot be
/// unloaded.
void* openJvmLibrary(const std::string& jreHome);

/// "-Djava.class.path=" and the entries joined with ':', or "" without entries.
std::string classPathOption(const std::vector<std::string>& entries);

/// Calls the method with the arguments behind it. An exception that it throws stays pending.
void CallStaticVoidMethod(JNIEnv* env, jclass clazz, jmethodID method, ...);

/// Runs the main class on this thread, in a JVM made for it, and returns 0 after main() has run,
/// all other threads of the application have ended and the JVM is gone; 1 on any failure before
/// main() was called. An exception that main() throws is printed and still gives 0.
///
/// A process can do this once, and after a failure that came behind the creation of the JVM not
/// again. The log file is closed before main() is called.
int runInThisProcess(const JavaInProcess& java);

}  // namespace quillory
