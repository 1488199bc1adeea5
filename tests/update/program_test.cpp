// The program itself, against a real web server.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <sstream>

#include "formats/sha256.h"
#include "tests/harness/child_process.h"
#include "tests/harness/eventually.h"
#include "tests/harness/http_server.h"
#include "tests/update/machine.h"
#include "tests/update/nginx.h"
#include "tests/update/program_under_test.h"

namespace quillory::testing {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

ChildOptions withoutProxies() {
  ChildOptions options;
  options.unset = {"http_proxy", "https_proxy", "all_proxy", "ALL_PROXY"};
  return options;
}

class Program : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!Nginx::isThere()) GTEST_SKIP() << "there is no nginx";
    server_ = std::make_unique<Nginx>(releases_.path());
    machine_.extraProperties = property("qystat_update_url", server_->url());
    // The lists of these tests are as old as the machine's clock says.
    realList_.issued = std::time(nullptr) - kDay;
    realList_.expires = std::time(nullptr) + 90 * kDay;
  }

  ReleaseComponent app(const std::string& version) {
    return releases_.add(kApplicationRole, "Demo", version, {{"app.jar", "version " + version}});
  }
  void release(std::int64_t number, const std::string& version) {
    ReleaseList list = ReleaseFolder::list(number, {app(version)});
    list.issued = realList_.issued + number;
    list.expires = realList_.expires;
    releases_.publish(list);
  }
  std::vector<std::string> command(const std::string& name) const {
    machine_.installation();  // which writes the launch properties
    return {updateUnderTest(), name, "--properties",
            machine_.updaterFolder() + "/QYLaunchProperties-1-1"};
  }
  ChildResult run(const std::string& name) const {
    return runChild(command(name), withoutProxies());
  }

  std::string newestLog() const {
    std::string newest;
    for (const auto& entry : std::filesystem::directory_iterator(machine_ / "logs"))
      newest = std::max(newest, entry.path().string());
    return readFile(newest);
  }

  ReleaseFolder releases_;
  Machine machine_{releases_};
  ReleaseList realList_;
  std::unique_ptr<Nginx> server_;
};

TEST_F(Program, InstallsAReleaseFromARealServer) {
  release(2, "2");
  const ChildResult result = run("install");
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_THAT(result.out, HasSubstr("\ndone version=2 release=2\n"));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(machine_.fileOf("2", "app.jar"), "version 2");
}

// As code hosts do with the assets of a release.
TEST_F(Program, InstallsFromAHostThatSendsToAnotherOneWhichGivesNoParts) {
  release(2, "2");
  const Nginx storage(releases_.path(), "max_ranges 0; etag off; add_header Last-Modified \"\";");
  std::string other = storage.url();
  other.replace(other.find("127.0.0.1"), 9, "localhost");
  const TempDir nothing;
  const Nginx front(nothing.str(), "location ~ ^/releases/download/updates/(.*)$ { return 302 " +
                                       other + "$1?signature=a%2Bb&expires=300; }");
  machine_.extraProperties =
      property("qystat_update_url", front.url() + "releases/download/updates/");
  const ChildResult cut = run("check");
  EXPECT_THAT(cut.out, HasSubstr("offer release=2 version=2"));
  const ChildResult result = run("install");
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_EQ(machine_.fileOf("2", "app.jar"), "version 2");
  EXPECT_EQ(front.log().size(), storage.log().size()) << "each by way of the first one";
  EXPECT_THAT(storage.log(), Each(HasSubstr("?signature=a%2Bb&expires=300")));
}

// As storage does that tells nobody which files there are.
TEST_F(Program, TriesAgainWhereAMissingFileIsForbidden) {
  release(2, "2");
  const std::string archive = releases_.path() + "/Quillory-Demo-2-archive.p2.l2";
  std::filesystem::rename(archive, archive + "-later");
  const Nginx storage(releases_.path(),
                      "error_page 404 @forbidden; location @forbidden { return 403; }");
  machine_.extraProperties = property("qystat_update_url", storage.url());
  const ChildResult early = run("install");
  EXPECT_EQ(early.exitStatus, 1);
  EXPECT_THAT(early.out, ContainsRegex("failed reason=.*403.* retry=1"));
  std::filesystem::rename(archive + "-later", archive);
  EXPECT_EQ(run("install").exitStatus, 0);
  EXPECT_EQ(machine_.fileOf("2", "app.jar"), "version 2");
}

TEST_F(Program, GoesFromReleaseToReleaseByDeltas) {
  const auto content = [](const std::string& version) {
    std::string bytes;
    for (unsigned i = 1; bytes.size() < 30000; i = i * 1103515245 + 12345)
      bytes += static_cast<char>(i >> 16);
    return Content{{"app.jar", bytes + "version " + version}};
  };
  std::vector<ReleaseComponent> components;
  for (const char* const version : {"1", "2", "3"}) {
    components.push_back(releases_.add(kApplicationRole, "Demo", version, content(version)));
    for (std::size_t base = 0; base + 1 < components.size(); ++base)
      releases_.addDelta(components.back(), components[base]);
  }
  machine_.installApplication("1", content("1"));
  for (const std::size_t version : {2u, 3u}) {
    ReleaseList list =
        ReleaseFolder::list(static_cast<std::int64_t>(version), {components[version - 1]});
    list.issued = realList_.issued;
    list.expires = realList_.expires;
    releases_.publish(list);
    EXPECT_EQ(run("install").exitStatus, 0);
    EXPECT_EQ(machine_.fileOf(std::to_string(version), "app.jar"),
              content(std::to_string(version))["app.jar"]);
  }
  for (const std::string& asked : server_->log()) EXPECT_THAT(asked, Not(HasSubstr("archive")));
}

TEST_F(Program, TrustsNoServerThatTheSystemDoesNot) {
  const TempDir folder;
  ASSERT_EQ(runChild({"openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout",
                      folder / "key.pem", "-out", folder / "cert.pem", "-days", "2", "-subj",
                      "/CN=localhost", "-addext", "subjectAltName=DNS:localhost"})
                .exitStatus,
            0);
  const std::string port = std::to_string(unusedPort());
  BackgroundChild server({"openssl", "s_server", "-accept", port, "-cert", folder / "cert.pem",
                          "-key", folder / "key.pem", "-www"});
  ASSERT_TRUE(server.waitForOutput("ACCEPT"));
  machine_.extraProperties = property("qystat_update_url", "https://localhost:" + port + '/');
  const ChildResult result = run("check");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("certificate"));
}

TEST_F(Program, WritesALogInTheFormOfTheLaunchers) {
  release(2, "2");
  run("install");
  std::vector<std::string> logs;
  for (const auto& entry : std::filesystem::directory_iterator(machine_ / "logs"))
    logs.push_back(entry.path().filename().string());
  ASSERT_EQ(logs.size(), 1u);
  EXPECT_THAT(logs[0], MatchesRegex("Update-[0-9-]*[.]log"));
  // The milliseconds since the line before, the first of which the file does not have.
  EXPECT_THAT(readFile(machine_ / "logs/" + logs[0]),
              AllOf(ContainsRegex("^[+][0-9]+ +\\[Extractor\\] Created "),
                    HasSubstr("[Update] Installed ")));
}

TEST_F(Program, AsksOnceAndForLittleWhereNothingIsNew) {
  release(1, "1");
  run("check");
  const ChildResult result = run("check");
  EXPECT_EQ(result.out, "phase name=CHECKING\nnone newest=1\n");
  const std::vector<std::string> asked = server_->log();
  ASSERT_EQ(asked.size(), 2u);
  EXPECT_THAT(asked[1], StartsWith("304 /Quillory-Demo-stable-releases "));
  EXPECT_LT(std::stoi(asked[1].substr(asked[1].rfind(' ') + 1)), 500);
}

// What the child has used, when it has ended.
rusage usageOf(const std::vector<std::string>& command) {
  const pid_t child = fork();
  if (child == 0) {
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  int status = 0;
  rusage used{};
  EXPECT_EQ(wait4(child, &status, 0, &used), child);
  EXPECT_EQ(status, 0);
  return used;
}

std::int64_t millisOf(const timeval& time) { return time.tv_sec * 1000 + time.tv_usec / 1000; }

TEST_F(Program, UsesLittleWhereNothingIsNew) {
  if (QUILLORY_SANITIZED) GTEST_SKIP() << "what the sanitizers take is theirs";
  release(1, "1");
  run("check");
  const rusage used = usageOf(command("check"));
  const std::int64_t millis = millisOf(used.ru_utime) + millisOf(used.ru_stime);
  RecordProperty("processor_millis", std::to_string(millis));
  RecordProperty("resident_kib", std::to_string(used.ru_maxrss));
  long long up = 0;
  long long down = 0;
  const std::string log = newestLog();
  const std::size_t told = log.find("status 304, ");
  ASSERT_NE(told, log.npos) << log;
  ASSERT_EQ(std::sscanf(log.c_str() + told, "status 304, %lld bytes up and %lld down", &up, &down),
            2);
  std::printf(
      "a check that finds nothing: %lld ms of processor time, %ld KiB, %lld and %lld bytes\n",
      static_cast<long long>(millis), used.ru_maxrss, up, down);
  EXPECT_LT(up + down, 2000);
  EXPECT_LT(millis, 50);
  EXPECT_LE(used.ru_maxrss, 20 * 1024);
}

TEST_F(Program, IsCancelledByASignalAndGoesOnAnotherTime) {
  // A server that sends half and stalls.
  release(2, "2");
  HttpServer slow;
  const std::string archive = releaseArchiveName("Demo", "2");
  const std::string bytes = readFile(releases_ / archive);
  slow.answer("/" + releaseListName("Demo", "stable"),
              answerFile(readFile(releases_ / releaseListName("Demo", "stable"))));
  slow.answer("/" + archive, answerStalled(bytes, bytes.size() / 2));
  machine_.extraProperties = property("qystat_update_url", slow.url());
  BackgroundChild child(command("install"), withoutProxies());
  const std::string part = machine_ / "QYUpdates/downloads/" + sha256Hex(bytes) + ".part";
  ASSERT_TRUE(eventually([&] {
    return std::filesystem::exists(part) && std::filesystem::file_size(part) == bytes.size() / 2;
  }));
  child.sendSignal(SIGTERM);
  const ChildResult result = child.finish();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("failed reason=cancelled retry=1\n"));
  machine_.extraProperties = property("qystat_update_url", server_->url());
  EXPECT_EQ(run("install").exitStatus, 0);
  EXPECT_THAT(server_->log().back(), StartsWith("206 /" + archive));
  EXPECT_EQ(machine_.fileOf("2", "app.jar"), "version 2");
}

TEST_F(Program, IsBusyWhereAnotherOneIsAtWork) {
  release(2, "2");
  HttpServer silent;
  silent.answer("/" + releaseListName("Demo", "stable"), answerSilence());
  machine_.extraProperties = property("qystat_update_url", silent.url());
  BackgroundChild first(command("install"), withoutProxies());
  ASSERT_TRUE(eventually([&] { return !silent.requests().empty(); }));
  const ChildResult second = run("install");
  EXPECT_EQ(second.exitStatus, 75);
  EXPECT_EQ(second.out, "busy\n");
  first.sendSignal(SIGTERM);
  EXPECT_EQ(first.finish().exitStatus, 1);
}

TEST_F(Program, SaysThatThereIsNoSuchHost) {
  machine_.extraProperties = property("qystat_update_url", "http://one.invalid/");
  const ChildResult result = run("check");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("failed reason=Could%20not%20resolve%20host"));
}

// The settings of the system, as its library tells them.
class ProxiedProgram : public Program {
 protected:
  static ChildOptions withSystemProxies(const std::string& answers) {
    ChildOptions options = withoutProxies();
    options.environment = {{"LD_LIBRARY_PATH", STAND_IN_LIBPROXY_FOLDER},
                           {"STAND_IN_PROXIES", answers}};
    return options;
  }
};

TEST_F(ProxiedProgram, TakesTheProxyThatTheSystemNames) {
  release(2, "2");
  machine_.extraProperties = property("qystat_update_url", "http://updates.test/");
  std::string proxy = server_->url();
  proxy.pop_back();
  const ChildResult result =
      runChild(command("install"), withSystemProxies("http://127.0.0.1:1 " + proxy));
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_EQ(machine_.fileOf("2", "app.jar"), "version 2");
  EXPECT_THAT(newestLog(),
              HasSubstr("[Update] The system's proxy for http://updates.test: " + proxy + "\n"));
}

TEST_F(ProxiedProgram, SaysWhichTheyAreAndHasSecondsToDoSo) {
  const ChildResult result =
      runChild({updateUnderTest(), "proxies", "http://updates.test/"},
               withSystemProxies("url socks://socks.test:1080 wpad:// left direct://"));
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.out, MatchesRegex("http://asked-for-updates.test/\nsocks5h://socks.test:1080\n"
                                       "http://left-(9|10)\ndirect\n"));
}

TEST_F(ProxiedProgram, GoesOnWithoutThemWhereNoAnswerComes) {
  machine_.extraProperties = property("qystat_update_url", "http://one.invalid/");
  const ChildResult result = runChild(command("check"), withSystemProxies("late"));
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("failed reason=Could%20not%20resolve%20host"));
  EXPECT_THAT(newestLog(), HasSubstr("The system's settings of proxies could not be asked\n"));
}

TEST_F(Program, AsksNobodyAtNoInvalid) {
  machine_.extraProperties = property("qystat_update_url", "http://no.invalid/");
  EXPECT_EQ(run("install").exitStatus, 3);
}

TEST_F(Program, RefusesAFolderAsAServer) {
  release(2, "2");
  machine_.extraProperties = property("qystat_update_url", "file://" + releases_.path());
  const ChildResult result = run("install");
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("that%20is%20no%20address%20of%20the%20web"));
}

TEST_F(Program, GoesOnWhereNobodyListens) {
  release(2, "2");
  std::string line;
  for (const std::string& word : command("install")) line += '\'' + word + "' ";
  runChild({"bash", "-c", line + "| true; exit 0"}, withoutProxies());
  EXPECT_TRUE(eventually([this] { return machine_.fileOf("2", "app.jar") == "version 2"; }));
}

TEST_F(Program, SaysWhatItTakes) {
  EXPECT_THAT(runChild({updateUnderTest(), "--help"}).out, StartsWith("usage: quillory-update "));
  EXPECT_EQ(runChild({updateUnderTest(), "--version"}).out, "quillory-update 1.0\n");
  const ChildResult result = runChild({updateUnderTest(), "frobnicate"});
  EXPECT_EQ(result.exitStatus, 2);
  EXPECT_THAT(result.err, StartsWith("quillory-update: there is no command frobnicate\n"));
  EXPECT_EQ(runChild({updateUnderTest(), "check", "--properties", "/none"}).exitStatus, 1);
}

TEST(Restart, LeavesTheProgramNoPipeOfSomebodyWhoHasEnded) {
  const TempDir folder;
  const std::string find =
      "for n in 0 1 2; do readlink /proc/$$/fd/$n; done > " + folder / "streams";
  const ChildResult result =
      runChild({updateUnderTest(), "restart", "--wait", "4194000", "--", "/bin/sh", "-c", find});
  EXPECT_EQ(result.exitStatus, 0);
  const std::string path = folder / "streams";
  const std::string expected = "/dev/null\n" + path + "\n/dev/null\n";
  EXPECT_TRUE(
      eventually([&] { return std::filesystem::exists(path) && readFile(path) == expected; }));
}

TEST(Restart, StartsTheProgramWhenTheOtherOneHasEnded) {
  const TempDir folder;
  BackgroundChild other({"cat"});
  BackgroundChild update({updateUnderTest(), "restart", "--wait", std::to_string(other.pid()), "--",
                          "/bin/sh", "-c", "echo \"$0\" > " + folder / "started", "an argument"});
  EXPECT_FALSE(std::filesystem::exists(folder / "started"));
  other.sendSignal(SIGKILL);
  other.finish();
  EXPECT_EQ(update.finish().exitStatus, 0);
  EXPECT_TRUE(eventually([&] {
    return std::filesystem::exists(folder / "started") && !readFile(folder / "started").empty();
  }));
  EXPECT_EQ(readFile(folder / "started"), "an argument\n");
}

}  // namespace
}  // namespace quillory::testing
