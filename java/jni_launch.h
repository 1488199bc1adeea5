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
  /// Where the end is noted (java/trial_end.h); "" where nobody asks, and the JVM then gets no
  /// option for it.
  std::string tryFile = {};
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
/// With a `tryFile` its end is noted there: the status of an application that ends the process, 1
/// for an exception that main() throws, else 0.
///
/// A process can do this once, and after a failure that came behind the creation of the JVM not
/// again. The log file is closed before main() is called.
int runInThisProcess(const JavaInProcess& java);

}  // namespace quillory
