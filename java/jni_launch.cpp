#include "java/jni_launch.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "java/cocoa_embedding.h"
#include "java/jvm_library_names.h"
#include "java/modified_utf8.h"
#include "java/trial_end.h"
#include "support/clock.h"
#include "support/exit_status.h"
#include "support/log.h"
#include "support/platform.h"
#include "support/start_end.h"

namespace quillory {
namespace {

using Texts = std::vector<std::string>;
using CreateJavaVm = jint (*)(JavaVM**, void**, void*);

constexpr int kLaunched = 0;
constexpr int kNotLaunched = 1;

/// What is noted of an exception that main() throws: the status that a `java` would end with.
constexpr int kThrew = 1;

/// For the JVM, which calls the hook without anything of ours. Written before there is a JVM.
std::string& tryFileOfJvm() {
  static std::string path;
  return path;
}

void JNICALL noteExit(jint status) { noteEnd(tryFileOfJvm(), status); }

/// Hands on what the JVM itself prints, such as why it cannot be created, and notes it.
jint JNICALL noteOutput(std::FILE* stream, const char* format, std::va_list arguments) {
  char text[2048];
  std::va_list again;
  va_copy(again, arguments);
  std::vsnprintf(text, sizeof text, format, again);
  va_end(again);
  if (stageOfStart() == StartStage::kCreatingJvm) noteCause(text);
  const int length = std::vfprintf(stream, format, arguments);
  std::fflush(stream);
  return length;
}

/// A JVM that cannot begin ends the process by itself, past what is to be done at its end. The
/// status is the one that it ends with. Of a later end the JVM has more to do.
void JNICALL endOfJvm() {
  if (stageOfStart() == StartStage::kCreatingJvm) std::exit(kExitFailure);
}

void logTexts(const char* what, const Texts& texts) {
  int index = 0;
  for (const std::string& text : texts)
    logMessage("[JNILaunch] %s %d = %s\n", what, index++, text.c_str());
}

/// The options of the JVM, logged one by one.
Texts allOptions(const JavaInProcess& java) {
  Texts result;
  if (!java.classPath.empty()) result.push_back(classPathOption(java.classPath));
  result.insert(result.end(), java.jvmOptions.begin(), java.jvmOptions.end());
  int index = 0;
  for (const std::string& option : result)
    logMessage("[JNILaunch] JNI Option %d=%s\n", index++, option.c_str());
  return result;
}

struct Jvm {
  JavaVM* vm = nullptr;
  JNIEnv* env = nullptr;
};

/// `options` must live as long as the JVM, which calls `hook`, where there is one, with the status
/// of an application that ends the process.
bool createJvm(CreateJavaVm create, Texts& options, void(JNICALL* hook)(jint), Jvm& jvm) {
  std::vector<JavaVMOption> list;
  for (std::string& option : options)
    list.push_back({.optionString = option.data(), .extraInfo = nullptr});
  static char exitOption[] = "exit";
  if (hook != nullptr)
    list.push_back({.optionString = exitOption, .extraInfo = reinterpret_cast<void*>(hook)});
  static char outputOption[] = "vfprintf";
  static char abortOption[] = "abort";
  if (areFailuresTold()) {
    list.push_back(
        {.optionString = outputOption, .extraInfo = reinterpret_cast<void*>(noteOutput)});
    list.push_back({.optionString = abortOption, .extraInfo = reinterpret_cast<void*>(endOfJvm)});
  }
  noteStage(StartStage::kCreatingJvm);
  JavaVMInitArgs arguments = {.version = JNI_VERSION_1_4,
                              .nOptions = static_cast<jint>(list.size()),
                              .options = list.data(),
                              .ignoreUnrecognized = JNI_TRUE};
  void* env = nullptr;
  if (create(&jvm.vm, &env, &arguments) != JNI_OK) {
    logMessage("[JNILauncher] Create Java VM Failed!\n");
    return false;
  }
  noteStage(StartStage::kPreparing);
  jvm.env = static_cast<JNIEnv*>(env);
  return true;
}

/// The main class, or null. The name is looked up with slashes for its dots.
jclass findMainClass(JNIEnv* env, std::string name) {
  std::replace(name.begin(), name.end(), '.', '/');
  logMessage("[JNILauncher] Searching for clazz %s\n", name.c_str());
  // Why a class was not found is not printed: the `java` that is started then says so itself.
  jclass clazz = env->FindClass(toModifiedUtf8(name).c_str());
  if (clazz == nullptr) logMessage("[JNILauncher] Searching for clazz failed!\n");
  return clazz;
}

jmethodID findMainMethod(JNIEnv* env, jclass clazz) {
  static constexpr char kMethod[] = "main";
  logMessage("[JNILauncher] Searching for main method %s\n", kMethod);
  jmethodID method = env->GetStaticMethodID(clazz, kMethod, "([Ljava/lang/String;)V");
  if (method == nullptr) logMessage("[JNILauncher] Searching for main method failed!\n");
  return method;
}

/// A String[] of `arguments`; null when memory is short.
jobjectArray makeArguments(JNIEnv* env, const Texts& arguments) {
  jclass stringClass = env->FindClass("java/lang/String");
  if (stringClass == nullptr) return nullptr;
  jobjectArray array =
      env->NewObjectArray(static_cast<jsize>(arguments.size()), stringClass, nullptr);
  if (array == nullptr) return nullptr;
  jsize index = 0;
  for (const std::string& argument : arguments) {
    logMessage("[JNILauncher] Set argument %d to %s\n", index, argument.c_str());
    jstring text = env->NewStringUTF(toModifiedUtf8(argument).c_str());
    if (text == nullptr) return nullptr;
    env->SetObjectArrayElement(array, index++, text);
    env->DeleteLocalRef(text);
  }
  return array;
}

/// What an exception says of itself, with its stack; "" where that cannot be had.
std::string traceOf(JNIEnv* env, jthrowable thrown) {
  jclass writerClass = env->FindClass("java/io/StringWriter");
  jclass printerClass = env->FindClass("java/io/PrintWriter");
  if (writerClass == nullptr || printerClass == nullptr) return "";
  jmethodID newWriter = env->GetMethodID(writerClass, "<init>", "()V");
  jmethodID newPrinter = env->GetMethodID(printerClass, "<init>", "(Ljava/io/Writer;)V");
  jmethodID print =
      env->GetMethodID(env->GetObjectClass(thrown), "printStackTrace", "(Ljava/io/PrintWriter;)V");
  jmethodID toString = env->GetMethodID(writerClass, "toString", "()Ljava/lang/String;");
  if (newWriter == nullptr || newPrinter == nullptr || print == nullptr || toString == nullptr)
    return "";
  jobject writer = env->NewObject(writerClass, newWriter);
  if (writer == nullptr) return "";
  jobject printer = env->NewObject(printerClass, newPrinter, writer);
  if (printer == nullptr) return "";
  env->CallVoidMethod(thrown, print, printer);
  jobject text = env->ExceptionCheck() ? nullptr : env->CallObjectMethod(writer, toString);
  if (text == nullptr) return "";
  const char* bytes = env->GetStringUTFChars(static_cast<jstring>(text), nullptr);
  if (bytes == nullptr) return "";
  const std::string trace = bytes;
  env->ReleaseStringUTFChars(static_cast<jstring>(text), bytes);
  return trace;
}

/// Tells the user of a main method that has thrown at once. One that runs on in other threads is
/// none of it.
class EarlyEnd {
 public:
  void noteThrown(JNIEnv* env, jthrowable thrown) {
    if (!areFailuresTold() || elapsedMillis() > kFirstSecond) return;
    noteCause(traceOf(env, thrown));
    env->ExceptionClear();
    isEarly_ = true;
  }
  void noteOver() const {
    const bool isFailure = isEarly_ && elapsedMillis() <= 3 * kFirstSecond;
    noteStage(isFailure ? StartStage::kFailed : StartStage::kOver);
  }

 private:
  static constexpr std::uint64_t kFirstSecond = 1000;
  std::uint64_t elapsedMillis() const { return timeCalls.nowMillis() - begin_; }

  const std::uint64_t begin_ = timeCalls.nowMillis();
  bool isEarly_ = false;
};

int runMain(const Jvm& jvm, const JavaInProcess& java) {
  jclass clazz = findMainClass(jvm.env, java.mainClass);
  if (clazz == nullptr) return kNotLaunched;  // The JVM stays: the process ends soon.
  jmethodID method = findMainMethod(jvm.env, clazz);
  if (method == nullptr) return kNotLaunched;
  jobjectArray array = makeArguments(jvm.env, java.arguments);
  if (array == nullptr) return kNotLaunched;

  logMessage("[JNILauncher] About to execute static void method.\n");
  closeLoggedFile();
  noteStage(StartStage::kRunning);
  EarlyEnd early;
  CallStaticVoidMethod(jvm.env, clazz, method, array);
  logMessage("[JNILauncher] Run complete.\n");
  const jthrowable thrown = jvm.env->ExceptionOccurred();
  const bool threw = thrown != nullptr;
  if (threw) {
    jvm.env->ExceptionDescribe();
    early.noteThrown(jvm.env, thrown);
  }
  logMessage("[JNILauncher] Destroying runtime.\n");
  jvm.vm->DestroyJavaVM();
  noteEnd(java.tryFile, threw ? kThrew : kExitSuccess);
  early.noteOver();
  logMessage("[JNILauncher] Done!\n");
  return kLaunched;
}

}  // namespace

void* openJvmLibrary(const std::string& jreHome) {
  for (const char* name : jvmLibraryNames()) {
    for (const char* folder : jvmLibraryFolders()) {
      const std::string path = jreHome + folder + name;
      void* library = dlopen(path.c_str(), RTLD_LAZY);
      if (library == nullptr) continue;
      logMessage("[JNILaunch] Identified JRE path as %s\n", path.c_str());
      return library;
    }
  }
  logMessage("[JNILaunch] [ERROR] Could not load dynamic library!\n");
  return nullptr;
}

std::string classPathOption(const std::vector<std::string>& entries) {
  std::string text;
  const char* before = "-Djava.class.path=";
  for (const std::string& entry : entries) {
    text.append(before).append(entry);
    before = ":";
  }
  return text;
}

void CallStaticVoidMethod(JNIEnv* env, jclass clazz, jmethodID method, ...) {
  std::va_list arguments;
  va_start(arguments, method);
  env->CallStaticVoidMethodV(clazz, method, arguments);
  va_end(arguments);
}

int runInThisProcess(const JavaInProcess& java) {
  logMessage("[JNILaunch] [pid=%d] [mainThread=%d]\n", static_cast<int>(getpid()),
             static_cast<int>(platformCalls.isMainThread()));
  void* library = openJvmLibrary(java.jreHome);
  if (library == nullptr) {
    logMessage("[JNILaunch] [ERROR] Unable to load JRE library!\n");
    return kNotLaunched;
  }
  const auto create = reinterpret_cast<CreateJavaVm>(dlsym(library, "JNI_CreateJavaVM"));
  if (create == nullptr) {
    logMessage("[JNILaunch] [ERROR] The JRE library has no JNI_CreateJavaVM!\n");
    return kNotLaunched;
  }
  logMessage("[JNILaunch] ------- JNI Launch call -------\n");
  logTexts("JVM Argument", java.jvmOptions);
  logTexts("CP Argument", java.classPath);
  logTexts("App Argument", java.arguments);

  letToolkitTakeOver();
  Texts options = allOptions(java);
  Jvm jvm;
  tryFileOfJvm() = java.tryFile;
  if (!createJvm(create, options, java.tryFile.empty() ? nullptr : noteExit, jvm))
    return kNotLaunched;
  return runMain(jvm, java);
}

}  // namespace quillory
