#include "tests/launcher/whole_start.h"

#include <filesystem>

#include "launcher/driver.h"
#include "tests/harness/eventually.h"

namespace quillory::testing {
namespace {

std::string launchFile(const char* mainClass) {
  return records(
      {"6", mainClass, "", "demo", "", "0", "0", "0", "1", "app.jar", "0", "", "", "", "0", "0"});
}

}  // namespace

const char kStartedJava[] =
    "#!/bin/sh\n"
    "[ \"$1\" = -Xshare:dump ] && exit 0\n"
    "for argument in \"$@\"; do echo \"$argument\"; done >\"${0%/*/*/*}/starting\"\n"
    "mv \"${0%/*/*/*}/starting\" \"${0%/*/*/*}/started\"\n";

std::string updaterEntries(const char* mainClass) {
  return fileEntry("lzma64", "#!/bin/sh\nexit 1\n") + fileEntry("nativesplash.png", "picture") +
         emptyEntry("cacerts") + emptyEntry("verpatch.exe") +
         fileEntry("GU.p2", archiveOf(fileEntry("QuilloryLaunch", launchFile(mainClass)) +
                                      fileEntry("app.jar", "jar")));
}

std::string jreEntry(std::string_view java) {
  return fileEntry("JRE.p2", archiveOf(fileEntry("Contents/Home/bin/java", java) +
                                       fileEntry("Contents/Home/lib/rt.jar", "classes")));
}

std::string appEntries(std::string_view content) {
  return fileEntry("App.p2", archiveOf(fileEntry("hello.txt", content))) + emptyEntry("extra");
}

TailText offlineTail() {
  TailText tail;
  tail.guVersion = "7";
  tail.jreVersion = "17";
  tail.appVersion = "3";
  tail.updateUrl = "http://no.invalid/";
  return tail;
}

WholeStart::WholeStart() {
  writeParams({{"jre_name", "jre"}, {"force_spawn", "true"}});
  writeTail(offlineTail(), updaterEntries("First") + jreEntry() + appEntries("hello"));
}

void WholeStart::writeParams(const Pairs& pairs) const {
  bundle_.writeResource("AppParams.excludefromsigning", paramsFile(pairs));
}

void WholeStart::writeTail(const TailText& tail, const std::string& entries) const {
  bundle_.writeResource("Tail", tail.bytes() + entries);
}

Ended WholeStart::start(std::vector<std::string> arguments, bool prepareOnly) const {
  arguments.insert(arguments.begin(), bundle_.exePath());
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  const int argc = static_cast<int>(argv.size());
  std::filesystem::remove(master_ + "/started");
  return inChild([&] {
    runStart(
        argv[0], {argc - 1, argv.data() + 1, argc, argv.data(), prepareOnly},
        {.homeFolder = [this] { return home_.str(); }, .isRelaunchedCopy = [] { return false; }});
  });
}

std::string WholeStart::startedIn(const std::string& masterFolder) {
  const std::string file = masterFolder + "/started";
  return eventually([&] { return std::filesystem::exists(file); }) ? readFile(file) : "";
}

std::string WholeStart::launchProperties(const std::string& arguments) {
  const std::size_t begin = arguments.find("/QYLaunchProperties-");
  const std::size_t line = arguments.rfind('\n', begin) + 1;
  return readFile(arguments.substr(line, arguments.find('\n', begin) - line));
}

void expectInOrder(const std::string& log, const std::vector<std::string>& lines) {
  std::size_t position = 0;
  for (const std::string& line : lines) {
    const std::size_t found = log.find(line, position);
    ASSERT_NE(found, std::string::npos) << "not there, or too early: " << line << "\nlog:\n" << log;
    position = found + line.size();
  }
}

}  // namespace quillory::testing
