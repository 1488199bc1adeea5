// A JVM library that runs nothing: it writes down how it is called. Options tell it what to do:
//
//   -Dstub.record=FILE   append a line a call to FILE
//   -Dstub.fail=STEP     fail at "create", "class", "method", "array" or "string"
//   -Dstub.throw         main() throws an exception
//
// Functions that the launcher has no need of are missing from its tables.
#include <jni.h>

#include <fstream>
#include <string>
#include <string_view>
#include <thread>

namespace {

std::string recordPath;
std::string failure;
bool throws;
std::thread::id creator;
jobject array;

void record(const std::string& line) {
  if (!recordPath.empty()) std::ofstream(recordPath, std::ios::app) << line << '\n';
}

bool failsAt(std::string_view step) { return failure == step; }

/// Something that is not null. The address is all that matters.
template <typename Reference>
Reference newReference() {
  static char places[1000];
  static std::size_t next = 0;
  return reinterpret_cast<Reference>(&places[next++]);
}

jclass JNICALL findClass(JNIEnv*, const char* name) {
  record(std::string("find ") + name);
  const bool isString = std::string_view(name) == "java/lang/String";
  return failsAt("class") && !isString ? nullptr : newReference<jclass>();
}

jmethodID JNICALL getStaticMethodId(JNIEnv*, jclass, const char* name, const char* signature) {
  record(std::string("method ") + name + ' ' + signature);
  return failsAt("method") ? nullptr : newReference<jmethodID>();
}

jobjectArray JNICALL newObjectArray(JNIEnv*, jsize length, jclass, jobject initial) {
  record("array " + std::to_string(length) + (initial == nullptr ? "" : " filled"));
  if (failsAt("array")) return nullptr;
  array = newReference<jobject>();
  return static_cast<jobjectArray>(array);
}

jstring JNICALL newStringUtf(JNIEnv*, const char* text) {
  record(std::string("string ") + text);
  return failsAt("string") ? nullptr : newReference<jstring>();
}

void JNICALL setObjectArrayElement(JNIEnv*, jobjectArray target, jsize index, jobject value) {
  record("set " + std::to_string(index) + (target == array && value != nullptr ? "" : " wrong"));
}

void JNICALL deleteLocalRef(JNIEnv*, jobject) {}

void JNICALL callStaticVoidMethodV(JNIEnv*, jclass, jmethodID, va_list arguments) {
  const bool isArray = va_arg(arguments, jobject) == array;
  const bool isCreator = std::this_thread::get_id() == creator;
  record(std::string("call") + (isArray ? "" : " without the array") +
         (isCreator ? "" : " on another thread"));
}

jthrowable JNICALL exceptionOccurred(JNIEnv*) {
  return throws ? newReference<jthrowable>() : nullptr;
}

void JNICALL exceptionDescribe(JNIEnv*) { record("describe"); }

jint JNICALL destroyJavaVm(JavaVM*) {
  record(std::this_thread::get_id() == creator ? "destroy" : "destroy on another thread");
  return JNI_OK;
}

JNINativeInterface_ environmentTable;
JNIEnv environment;
JNIInvokeInterface_ vmTable;
JavaVM vm;

void fillTables() {
  environmentTable.FindClass = findClass;
  environmentTable.GetStaticMethodID = getStaticMethodId;
  environmentTable.NewObjectArray = newObjectArray;
  environmentTable.NewStringUTF = newStringUtf;
  environmentTable.SetObjectArrayElement = setObjectArrayElement;
  environmentTable.DeleteLocalRef = deleteLocalRef;
  environmentTable.CallStaticVoidMethodV = callStaticVoidMethodV;
  environmentTable.ExceptionOccurred = exceptionOccurred;
  environmentTable.ExceptionDescribe = exceptionDescribe;
  environment.functions = &environmentTable;
  vmTable.DestroyJavaVM = destroyJavaVm;
  vm.functions = &vmTable;
}

void obey(const JavaVMInitArgs& arguments) {
  for (jint i = 0; i < arguments.nOptions; ++i) {
    const std::string option = arguments.options[i].optionString;
    if (option.starts_with("-Dstub.record=")) recordPath = option.substr(14);
    if (option.starts_with("-Dstub.fail=")) failure = option.substr(12);
    if (option == "-Dstub.throw") throws = true;
  }
}

}  // namespace

extern "C" JNIEXPORT jint JNICALL JNI_CreateJavaVM(JavaVM** newVm, void** env, void* given) {
  const auto& arguments = *static_cast<JavaVMInitArgs*>(given);
  obey(arguments);
  record("create version " + std::to_string(arguments.version) + " ignore " +
         std::to_string(arguments.ignoreUnrecognized));
  for (jint i = 0; i < arguments.nOptions; ++i)
    record(std::string("option ") + arguments.options[i].optionString);
  if (failsAt("create")) return JNI_ERR;
  creator = std::this_thread::get_id();
  fillTables();
  *newVm = &vm;
  *env = &environment;
  return JNI_OK;
}
