#include "tests/e2e/launcher_run.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "tests/harness/eventually.h"

namespace quillory::testing {

namespace fs = std::filesystem;

TestUser::TestUser(const std::string& name) : home_(folder_ / name) {
  std::filesystem::create_directories(home_);
  const std::string ids = std::to_string(getuid()) + ":" + std::to_string(getgid());
  writeFile(folder_ / "passwd", "tester:x:" + ids + ":Tester:" + home_ + ":/bin/sh\n");
  writeFile(folder_ / "group", "testers:x:" + std::to_string(getgid()) + ":\n");
}

ChildOptions TestUser::options() const {
  ChildOptions options;
  options.environment = {{"HOME", home_},
                         {"LD_PRELOAD", "libnss_wrapper.so"},
                         {"NSS_WRAPPER_PASSWD", folder_ / "passwd"},
                         {"NSS_WRAPPER_GROUP", folder_ / "group"},
                         // The sanitizers refuse what the wrapper prefers.
                         {"NSS_WRAPPER_DISABLE_DEEPBIND", "1"},
                         {"ASAN_OPTIONS", "detect_leaks=0:verify_asan_link_order=0"},
                         {"LC_ALL", "C.UTF-8"}};
  options.unset = {"DISPLAY",           "DBUS_SESSION_BUS_ADDRESS",
                   "JAVA_TOOL_OPTIONS", "http_proxy",
                   "https_proxy",       "HTTPS_PROXY",
                   "all_proxy",         "ALL_PROXY",
                   "no_proxy",          "NO_PROXY"};
  options.limit = std::chrono::seconds(120);
  return options;
}

ChildResult start(const HandMadeBundle& bundle, const TestUser& user,
                  const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {bundle.executable()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return runChild(command, user.options());
}

void installRuntime(const std::string& master) {
  const fs::path runtime = QUILLORY_TEST_RUNTIME;
  const fs::path alias = master + "/Quillory-JRE-17-complete";
  fs::create_directories(alias / "bin");
  fs::create_directories(alias / "lib");
  fs::copy_file(runtime / "bin/java", alias / "bin/java");
  fs::create_symlink(runtime / "conf", alias / "conf");
  for (const auto& entry : fs::directory_iterator(runtime / "lib"))
    fs::create_symlink(entry.path(), alias / "lib" / entry.path().filename());
  // A link to that of Java 8 is not written to.
  if (!fs::exists(alias / "lib/rt.jar")) writeFile(alias / "lib/rt.jar", "not looked into");
  fs::create_directories(alias.string() + ".plugin/Contents/MacOS");
  fs::create_symlink(alias, alias.string() + ".plugin/Contents/Home");
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> logLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t digits = line.find_first_not_of("0123456789", 1);
    if (line.size() >= 10 && line[0] == '+' && digits > 1 && line[9] == ' ')
      lines.push_back(line.substr(std::max<std::size_t>(10, digits + 1)));
  }
  return lines;
}

int countLine(const ChildResult& result, const std::string& line) {
  const std::vector<std::string> lines = logLines(result.out);
  return static_cast<int>(std::count(lines.begin(), lines.end(), line));
}

bool linesInOrder(const ChildResult& result, const std::vector<std::string>& lines) {
  const std::vector<std::string> all = logLines(result.out);
  auto place = all.begin();
  for (const std::string& line : lines) {
    place = std::find(place, all.end(), line);
    if (place == all.end()) {
      ADD_FAILURE() << "missing, or out of order: " << line << "\nin:\n" << result.out;
      return false;
    }
    ++place;
  }
  return true;
}

std::vector<std::string> startedArguments(const TestUser& user, const std::string& app) {
  const std::string path = user.master(app) + "/started";
  if (!eventually([&] { return std::filesystem::exists(path); })) return {};
  std::vector<std::string> lines;
  std::istringstream stream(readFile(path));
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  std::filesystem::remove(path);
  return lines;
}

std::vector<std::string> reportOf(const ChildResult& result) {
  std::vector<std::string> lines;
  std::istringstream stream(result.out);
  bool isInside = false;
  for (std::string line; std::getline(stream, line);) {
    if (line == "REPORT END") isInside = false;
    if (isInside) lines.push_back(line);
    if (line == "REPORT BEGIN") isInside = true;
  }
  return lines;
}

std::string reported(const ChildResult& result, const std::string& name) {
  for (const std::string& line : reportOf(result))
    if (line.rfind(name + "=", 0) == 0) return line.substr(name.size() + 1);
  return "(none)";
}

}  // namespace quillory::testing
