#include "java/jni_launch.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <span>
#include <string>
#include <vector>

#include "java/jvm_library_names.h"
#include "java/modified_utf8.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/platform.h"
#include "support/strings.h"

namespace quillory {
namespace {

using Texts = std::span<const char* const>;
using CreateJavaVm = jint (*)(JavaVM**, void**, void*);

constexpr int kLaunched = 0;
constexpr int kNotLaunched = 1;

/// Where the library lies: in a plain Java home, in a bundle, in a bundle with a development kit.
constexpr const char* kLibraryFolders[] = {"/lib/server/", "/Contents/Home/lib/server/",
                                           "/Contents/Home/jre/lib/server/"};

Texts textsOf(int count, const char* const* texts) {
  return {texts, static_cast<std::size_t>(std::max(count, 0))};
}

void logTexts(const char* what, Texts texts) {
  int index = 0;
  for (const char* text : texts) logMessage("[JNILaunch] %s %d = %s\n", what, index++, text);
}

/// The options of the JVM, logged one by one.
std::vector<std::string> jvmOptions(Texts options, Texts classPath) {
  std::vector<std::string> result;
  if (!classPath.empty()) {
    const OwnedText text(getClassPathFor(static_cast<int>(classPath.size()), classPath.data()));
    result.emplace_back(text.get());
  }
  result.insert(result.end(), options.begin(), options.end());
  int index = 0;
  for (const std::string& option : result)
    logMessage("[JNILaunch] JNI Option %d=%s\n", index++, option.c_str());
  return result;
}

struct Jvm {
  JavaVM* vm = nullptr;
  JNIEnv* env = nullptr;
};

/// `options` must live as long as the JVM.
bool createJvm(CreateJavaVm create, std::vector<std::string>& options, Jvm& jvm) {
  std::vector<JavaVMOption> list;
  for (std::string& option : options)
    list.push_back({.optionString = option.data(), .extraInfo = nullptr});
  JavaVMInitArgs arguments = {.version = JNI_VERSION_1_4,
                              .nOptions = static_cast<jint>(list.size()),
                              .options = list.data(),
                              .ignoreUnrecognized = JNI_TRUE};
  void* env = nullptr;
  if (create(&jvm.vm, &env, &arguments) != JNI_OK) {
    logMessage("[JNILauncher] Create Java VM Failed!\n");
    return false;
  }
  jvm.env = static_cast<JNIEnv*>(env);
  return true;
}

/// `mainClass`, or null. The name is looked up with slashes for its dots.
jclass findMainClass(JNIEnv* env, const char* mainClass) {
  std::string name = mainClass;
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
jobjectArray makeArguments(JNIEnv* env, Texts arguments) {
  jclass stringClass = env->FindClass("java/lang/String");
  if (stringClass == nullptr) return nullptr;
  jobjectArray array =
      env->NewObjectArray(static_cast<jsize>(arguments.size()), stringClass, nullptr);
  if (array == nullptr) return nullptr;
  jsize index = 0;
  for (const char* argument : arguments) {
    logMessage("[JNILauncher] Set argument %d to %s\n", index, argument);
    jstring text = env->NewStringUTF(toModifiedUtf8(argument).c_str());
    if (text == nullptr) return nullptr;
    env->SetObjectArrayElement(array, index++, text);
    env->DeleteLocalRef(text);
  }
  return array;
}

int runMain(const Jvm& jvm, const char* mainClass, Texts arguments) {
  jclass clazz = findMainClass(jvm.env, mainClass);
  if (clazz == nullptr) return kNotLaunched;  // The JVM stays: the process ends soon.
  jmethodID method = findMainMethod(jvm.env, clazz);
  if (method == nullptr) return kNotLaunched;
  jobjectArray array = makeArguments(jvm.env, arguments);
  if (array == nullptr) return kNotLaunched;

  logMessage("[JNILauncher] About to execute static void method.\n");
  closeLoggedFile();
  CallStaticVoidMethod(jvm.env, clazz, method, array);
  logMessage("[JNILauncher] Run complete.\n");
  if (jvm.env->ExceptionOccurred() != nullptr) jvm.env->ExceptionDescribe();
  logMessage("[JNILauncher] Destroying runtime.\n");
  jvm.vm->DestroyJavaVM();
  logMessage("[JNILauncher] Done!\n");
  return kLaunched;
}

}  // namespace

void* loadJVMLibrary(const char* jreHome) {
  for (const char* name : jvmLibraryNames()) {
    for (const char* folder : kLibraryFolders) {
      const std::string path = std::string(jreHome) + folder + name;
      void* library = dlopen(path.c_str(), RTLD_LAZY);
      if (library == nullptr) continue;
      logMessage("[JNILaunch] Identified JRE path as %s\n", path.c_str());
      return library;
    }
  }
  logMessage("[JNILaunch] [ERROR] Could not load dynamic library!\n");
  return nullptr;
}

char* getClassPathFor(int count, const char* const* entries) {
  std::string text;
  const char* before = "-Djava.class.path=";
  for (const char* entry : textsOf(count, entries)) {
    text.append(before).append(entry);
    before = ":";
  }
  return cloneString(text.c_str());
}

void CallStaticVoidMethod(JNIEnv* env, jclass clazz, jmethodID method, ...) {
  std::va_list arguments;
  va_start(arguments, method);
  env->CallStaticVoidMethodV(clazz, method, arguments);
  va_end(arguments);
}

int launchJavaJNI(const char* mainClass, const char* jreHome, int optionCount,
                  const char* const* options, int classPathCount, const char* const* classPath,
                  int argumentCount, const char* const* arguments) {
  logMessage("[JNILaunch] [pid=%d] [mainThread=%d]\n", static_cast<int>(getpid()),
             static_cast<int>(platformCalls.isMainThread()));
  void* library = loadJVMLibrary(jreHome);
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
  logTexts("JVM Argument", textsOf(optionCount, options));
  logTexts("CP Argument", textsOf(classPathCount, classPath));
  logTexts("App Argument", textsOf(argumentCount, arguments));

  std::vector<std::string> vmOptions =
      jvmOptions(textsOf(optionCount, options), textsOf(classPathCount, classPath));
  Jvm jvm;
  if (!createJvm(create, vmOptions, jvm)) return kNotLaunched;
  return runMain(jvm, mainClass, textsOf(argumentCount, arguments));
}

}  // namespace quillory
