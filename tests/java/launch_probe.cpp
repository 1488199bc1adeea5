// A process for the launches that can happen once in a process, or that end it:
//
//   launch_probe jni MAIN_CLASS JRE_HOME CLASS_PATH_ENTRY [JVM_OPTION...] -- [ARGUMENT...]
//   launch_probe flow MASTER APP_FOLDER JRE LAUNCH_CLASS FORCE_SPAWN [ARGUMENT...]
//
// The launch runs on a thread of its own, as in the launcher. Its result is the exit status, and
// the last line on standard output.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "java/for_embedders.h"
#include "java/jni_launch.h"
#include "java/launch_flow.h"

namespace {

using Arguments = std::vector<char*>;

std::int64_t launchJni(const Arguments& arguments) {
  std::vector<const char*> options;
  std::size_t i = 3;
  for (; i < arguments.size() && std::string(arguments[i]) != "--"; ++i)
    options.push_back(arguments[i]);
  const std::vector<const char*> rest(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                      arguments.end());
  const char* const classPath[] = {arguments[2]};
  return quillory::launchJavaJNI(arguments[0], arguments[1], static_cast<int>(options.size()),
                                 options.data(), 1, classPath, static_cast<int>(rest.size()),
                                 rest.data());
}

std::int64_t launchFlow(const Arguments& arguments) {
  quillory::forceSpawn = std::string(arguments[4]) == "true";
  Arguments rest(arguments.begin() + 5, arguments.end());
  quillory::PropertyBlock block;
  quillory::addStaticProperty(block, "app_name", "Demo");
  return quillory::launchFromLaunchFile(arguments[0], block, static_cast<int>(rest.size()),
                                        rest.data(), arguments[1], "http://update/", nullptr,
                                        arguments[2], std::atoi(arguments[3]), nullptr, false,
                                        nullptr, "/bin/launcher", false, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments(argv + 2, argv + argc);
  std::int64_t result = 0;
  std::thread run([&] {
    result = std::string(argv[1]) == "jni" ? launchJni(arguments) : launchFlow(arguments);
  });
  run.join();
  std::printf("RESULT %ld\n", static_cast<long>(result));
  return static_cast<int>(result);
}
