#include "tests/e2e/online_machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;

// Beside the scripts of the tests, a start runs chmod, cp and which.
constexpr const char* kTools[] = {"chmod", "cp", "mv", "sh", "which"};

std::string whereIs(const std::string& tool) {
  for (const char* folder : {"/usr/bin/", "/bin/"})
    if (fs::exists(folder + tool)) return folder + tool;
  ADD_FAILURE() << "there is no " << tool;
  return "";
}

void writeScript(const std::string& path, const std::string& content) {
  writeFile(path, "#!/bin/sh\n" + content);
  fs::permissions(path, fs::perms{0755});
}

}  // namespace

std::string archivePath(const std::string& version) {
  return "/Quillory-JRE-" + version + "-archive.p2.l2";
}

void publishRuntime(HttpServer& server, const std::string& version, const std::string& packed) {
  server.answer(kVersionPath, answerFile(version + "\n"));
  server.answer(archivePath(version), answerFile(packed));
}

const std::string& packedScriptRuntime() {
  static const std::string packed = packedArchive(scriptRuntimeContent(), &testKey());
  return packed;
}

Tail onlineTail(const std::string& updateUrl) {
  static const std::string entries =
      updaterEntries({}, nullptr) +
      applicationEntries(fileEntry("hello.txt", "hello from version 3\n"), nullptr);
  Tail tail;
  tail.appVersion = "3";
  tail.publicKey = testKey().publicHex;
  tail.updateUrl = updateUrl;
  tail.entries = entries;
  return tail;
}

void makeToolFolder(const std::string& folder) {
  fs::create_directories(folder);
  for (const std::string tool : kTools) fs::create_symlink(whereIs(tool), folder + '/' + tool);
}

void makeScriptJre(const std::string& home, const std::string& version, int compatibility) {
  writeScript(home + "/bin/java",
              "case \"$*\" in\n"
              "-version) echo 'java version \"" +
                  version +
                  "\"'; exit ;;\n"
                  "*Compatible*) exit " +
                  std::to_string(compatibility) +
                  " ;;\n"
                  "esac\n"
                  "for argument in \"$@\"; do echo \"$argument\"; done >\"${0%/*/*/*}/starting\"\n"
                  "mv \"${0%/*/*/*}/starting\" \"${0%/*/*/*}/started\"\n");
  writeScript(home + "/bin/unpack200", "exit 1\n");
  writeFile(home + "/lib/rt.jar", "not looked into");
}

OnlineMachine::OnlineMachine() { makeToolFolder(path("tools")); }

void OnlineMachine::linkJavaTo(const std::string& target) const {
  fs::create_symlink(target, path("tools/java"));
}

std::string OnlineMachine::makeScriptJre(const std::string& name, const std::string& version,
                                         int compatibility) const {
  testing::makeScriptJre(path(name), version, compatibility);
  return path(name);
}

ChildOptions OnlineMachine::options() const {
  ChildOptions options = user_.options();
  options.environment["PATH"] = path("tools");
  options.directory = folder_.str();
  return options;
}

HandMadeBundle OnlineMachine::makeBundle(const Tail& tail, const Parameters& parameters) const {
  fs::remove_all(path("bundle"));
  Parameters all = {{"jre_name", "JRE"}};
  all.insert(all.end(), parameters.begin(), parameters.end());
  return HandMadeBundle(path("bundle"), tail, all);
}

ChildResult OnlineMachine::start(const Tail& tail, const Parameters& parameters,
                                 const ChildOptions& options) const {
  return runChild({makeBundle(tail, parameters).executable(), "argument"}, options);
}

std::unique_ptr<BackgroundChild> OnlineMachine::startInBackground(
    const Tail& tail, const ChildOptions& options) const {
  return std::make_unique<BackgroundChild>(
      std::vector<std::string>{makeBundle(tail, {}).executable(), "argument"}, options);
}

void OnlineMachine::expectGoodStart(const Tail& tail) const {
  const ChildResult result = start(tail);
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
  EXPECT_THAT(namesIn(master()), Contains("Quillory-Demo-3-complete"));
}

void OnlineMachine::expectNoRuntime() const {
  EXPECT_THAT(namesIn(master()),
              ElementsAre("QYAppsSharedConfig", "Quillory-Quillory-1-complete", "logs"));
}

}  // namespace quillory::testing
