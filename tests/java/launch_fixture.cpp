#include "tests/java/launch_fixture.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "java/for_embedders.h"
#include "java/launch_flow.h"
#include "tests/harness/records.h"

extern char** environ;

namespace quillory::testing {
namespace {

std::vector<std::string> lastSpawned;
int spawnResult;

int writeDownSpawn(pid_t*, const char* path, const posix_spawn_file_actions_t*,
                   char* const arguments[], char* const environment[]) {
  lastSpawned.clear();
  for (int i = 0; arguments[i] != nullptr; ++i) lastSpawned.emplace_back(arguments[i]);
  EXPECT_STREQ(path, arguments[0]);
  EXPECT_EQ(environment, environ);
  return spawnResult;
}

std::string countedRecords(const std::vector<std::string>& values) {
  std::string bytes = records({std::to_string(values.size())});
  for (const std::string& value : values) bytes += records({value});
  return bytes;
}

}  // namespace

std::string LaunchFileText::bytes() const {
  std::string bytes =
      records({version, mainClass, "on.Update", appName, "icon.icns", "0", memory, stack});
  bytes += countedRecords(classPath) + countedRecords(extraArguments);
  const int number = std::atoi(version.c_str());
  if (number >= 3) bytes += records({compatibilityClass});
  if (number >= 4) bytes += records({"PostInstall", "PreUninstall"});
  if (number >= 5) bytes += countedRecords(options);
  if (number >= 6) bytes += records({"1"});
  return bytes;
}

ChildOptions withJvm() {
  ChildOptions options;
  options.environment = {{"ASAN_OPTIONS", "detect_leaks=0:handle_segv=0"}};
  return options;
}

LaunchTest::LaunchTest()
    : clock_(
          timeCalls.nowMillis, +[]() -> std::uint64_t { return 1'700'000'000'123; }),
      spawn_(processCalls.spawn, processCalls.spawn) {
  lastSpawned.clear();
  writeJava(jre_ + "/bin/java", "exit 0");
  writeLaunchFile({});
  addStaticProperty(block_, "app_name", "Demo");
}

void LaunchTest::writeLaunchFile(const LaunchFileText& file) const {
  writeFile(app_ + "/QuilloryLaunch", file.bytes());
}

std::int64_t LaunchTest::launch(int launchClass, const std::string& jre) {
  std::vector<char*> arguments;
  for (std::string& argument : userArguments_) arguments.push_back(argument.data());
  return launchFromLaunchFile(master_.c_str(), block_, static_cast<int>(arguments.size()),
                              arguments.data(), "Quillory-Demo-3-complete", updateUrl_.c_str(),
                              dynamicUpdateUrl_, jre.c_str(), launchClass, nullptr, false, nullptr,
                              "/bin/launcher", false, nullptr);
}

void LaunchTest::recordSpawn(int result) {
  spawnResult = result;
  processCalls.spawn = writeDownSpawn;
}

const std::vector<std::string>& LaunchTest::spawned() { return lastSpawned; }

std::vector<std::string> LaunchTest::seenBy(const std::string& path) {
  std::vector<std::string> arguments;
  std::ifstream file(path + ".seen");
  for (std::string line; std::getline(file, line);) arguments.push_back(line);
  return arguments;
}

void LaunchTest::writeJava(const std::string& path, const std::string& end) {
  writeFile(path, "#!/bin/sh\nfor a; do echo \"$a\"; done > \"$0.seen\"\n" + end + "\n");
  chmod(path.c_str(), 0755);
}

}  // namespace quillory::testing
