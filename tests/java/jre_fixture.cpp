#include "tests/java/jre_fixture.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "java/launch_flow.h"
#include "support/log.h"
#include "support/platform.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

std::map<std::string, std::string> served;
std::vector<std::string> asked;
std::string destination;
std::vector<std::string> splashCalls;

int download(const char* url, const char* destPath, const DownloadLimits&) {
  const std::string address = url;
  asked.push_back(address);
  destination = destPath;
  const auto file = served.find(address.substr(0, address.find('?')));
  if (file != served.end()) writeFile(destPath, file->second);
  return 1;
}

splash::WindowCalls recordingWindow() {
  splash::WindowCalls calls = platformCalls.window;
  calls.showWindow = [] { splashCalls.emplace_back("show"); };
  calls.closeWindow = [] { splashCalls.emplace_back("close"); };
  calls.startRedrawThread = [](void*) -> void* {
    splashCalls.emplace_back("animate");
    return nullptr;
  };
  return calls;
}

splash::WindowCalls loggingWindow() {
  splash::WindowCalls calls = platformCalls.window;
  calls.showWindow = [] { logMessage("splash: show\n"); };
  calls.closeWindow = [] { logMessage("splash: close\n"); };
  return calls;
}

}  // namespace

void writeScript(const std::string& path, const std::string& body) {
  writeFile(path, "#!/bin/sh\n" + body + '\n');
  fs::permissions(path, fs::perms(0755));
}

std::string javaScript(const std::string& version, int status) {
  return "case \"$1\" in\n-version) echo 'java version \"" + version +
         "\"' ;;\n-Xshare:dump) : > \"$(dirname \"$0\")/../lib/classes.jsa\" ;;\n*) exit " +
         std::to_string(status) + " ;;\nesac";
}

void writeJavaHome(const std::string& home, const std::string& version) {
  writeScript(home + "/bin/java", javaScript(version));
  writeScript(home + "/bin/unpack200", "exit 0");
  writeFile(home + "/lib/rt.jar", "classes");
  writeFile(home + "/lib/security/cacerts", "the JRE's own");
  writeFile(home + "/lib/jspawnhelper", "helper");
  fs::permissions(home + "/lib/jspawnhelper", fs::perms(0644));
}

std::vector<std::string> listTree(const std::string& folder) {
  std::vector<std::string> entries;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    std::string line = entry.path().lexically_relative(folder).string();
    if (entry.is_symlink())
      line += " -> " + fs::read_symlink(entry.path()).string();
    else if (entry.is_directory())
      line += '/';
    entries.push_back(line);
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

std::string fileEntry(const std::string& path, const std::string& content) {
  return records({"0", path, std::to_string(content.size())}) + content;
}

std::string jreArchive(const std::string& extra) {
  const std::string home = "Contents/Home/";
  return records({"1", "Contents"}) + records({"1", "Contents/MacOS"}) +
         fileEntry("Contents/MacOS/libjli.dylib", "stub") +
         fileEntry(home + "bin/unpack200", "#!/bin/sh\nexit 0\n") +
         fileEntry(home + "bin/java", "#!/bin/sh\n" + javaScript("1.8.0_202") + '\n') +
         fileEntry(home + "lib/rt.jar", "classes") +
         fileEntry(home + "lib/jli/libjli.dylib", "library") +
         fileEntry(home + "lib/security/cacerts", "the JRE's own") + extra + records({""});
}

std::string brokenSignature(std::size_t length) {
  return records({"0", "qyArcSpBlock_DigitalSignature1", "1", std::to_string(length), "00ff00ff"});
}

ScopedEnvironment::ScopedEnvironment(const char* name, const std::string& value) : name_(name) {
  if (const char* const old = std::getenv(name)) saved_ = old;
  setenv(name, value.c_str(), 1);
}

ScopedEnvironment::~ScopedEnvironment() { setenv(name_.c_str(), saved_.c_str(), 1); }

FakeServer::FakeServer() : transport_(platformCalls.downloadFile, download) {
  served.clear();
  asked.clear();
  destination.clear();
}

FakeServer::~FakeServer() { served.clear(); }

std::map<std::string, std::string>& FakeServer::files() { return served; }

const std::vector<std::string>& FakeServer::requests() const { return asked; }

std::string FakeServer::lastDestination() const { return destination; }

FetchDisplay splashDisplay() {
  return {.show = splash::showSplash,
          .showIndefiniteProgress = [] { splash::setProgress(splash::kProgressIndefinite); },
          .takeDown = splash::cleanup};
}

std::function<bool(const std::string& updaterFolder, const std::string& java)> compatibilityClassOf(
    const std::string& masterFolder) {
  return [masterFolder](const std::string& updaterFolder, const std::string& java) {
    const PropertyBlock properties;
    return isCompatible(launch({.masterFolder = masterFolder,
                                .appFolderName = updaterFolder,
                                .properties = properties,
                                .launchClass = kLaunchCompatibilityCheck,
                                .javaToCheck = java}));
  };
}

SplashWatch::SplashWatch() : window_(platformCalls.window, recordingWindow()) {
  splashCalls.clear();
}

SplashWatch::~SplashWatch() { splashCalls.clear(); }

const std::vector<std::string>& SplashWatch::calls() const { return splashCalls; }

SplashInTheLog::SplashInTheLog() : window_(platformCalls.window, loggingWindow()) {}

}  // namespace quillory::testing
