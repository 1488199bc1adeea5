// `install --elevate`, whole: an ordinary user, elev_mac and sudo, the program of the installation
// with the administrator's rights, and a real web server.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <optional>

#include "packager/writing/update_settings_writer.h"
#include "tests/harness/private_root.h"
#include "tests/update/machine.h"
#include "tests/update/nginx.h"
#include "tests/update/program_under_test.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kMaster[] = "/Library/Application Support/Quillory-Demo";
constexpr char kUpdaterFolder[] =
    "/Library/Application Support/Quillory-Demo/Quillory-Quillory-1-complete";
constexpr char kOwn[] = "/home/user/own";
constexpr char kProperties[] = "/home/user/own/QYLaunchProperties-1-1";

class InstallForAll : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateRoot::whyImpossible().empty()) GTEST_SKIP() << PrivateRoot::whyImpossible();
    if (!Nginx::isThere()) GTEST_SKIP() << "there is no nginx";
    if (!fs::exists("/usr/bin/sudo")) GTEST_SKIP() << "needs sudo";
    root_.emplace();
    server_ = std::make_unique<Nginx>(releases_.path());
    release(2, "2", "version 2");
    fs::create_directories(at("/App.app/Contents/Resources"));
    fs::copy_file(QUILLORY_ELEV_MAC, at("/App.app/Contents/Resources/elev_mac"));
    fs::create_directories(at(kUpdaterFolder));
    fs::copy_file(updateUnderTest(), at(kUpdaterFolder) + "/quillory-update");
    writeFile(at(kUpdaterFolder) + "/QuilloryLaunch", "launch");
    writeFile(at(kMaster) + "/Quillory-Demo-1-complete/app.jar", "version 1");
    settings_.keys = {testKey("working").publicHex(), testKey("reserve").publicHex()};
    settings_.updateUrl = server_->url();
    settings_.runtimeName = "JRE";
    writeSettings();
    root_->makeUserFolder(kOwn);
    writeProperties("");
    root_->allowSudo("ALL");
  }

  void release(std::int64_t number, const std::string& version, const std::string& content) {
    ReleaseList list = ReleaseFolder::list(
        number, {releases_.add(kApplicationRole, "Demo", version, {{"app.jar", content}})});
    list.issued = std::time(nullptr) - kDay + number;
    list.expires = std::time(nullptr) + 90 * kDay;
    releases_.publish(list);
  }
  void writeSettings() const {
    writeFile(at(kUpdaterFolder) + "/QuilloryUpdate", pack::updateSettingsBytes(settings_));
  }
  void writeProperties(const std::string& extra) const {
    writeFile(at(kProperties),
              property("qystat_update_url", server_->url()) +
                  property("qystat_install_type", "perm_all") +
                  property("qystat_app_name", "Demo") + property("qystat_app_dir", kUpdaterFolder) +
                  property("qystat_jre_name", "JRE") +
                  property("qystat_launched_from_dynprops", "/App.app/Contents/MacOS/launcher") +
                  property("qydyna_hardened", "true") + extra);
  }

  std::string at(const std::string& inside) const { return *root_ / inside; }
  ChildResult run(const std::vector<std::string>& words) const {
    std::vector<std::string> command = {std::string(kUpdaterFolder) + "/quillory-update"};
    command.insert(command.end(), words.begin(), words.end());
    ChildOptions options;
    options.environment = {{"JAVA_TOOL_OPTIONS", "-javaagent:/home/user/agent.jar"}};
    options.unset = {"DISPLAY",     "WAYLAND_DISPLAY", "http_proxy",
                     "https_proxy", "all_proxy",       "ALL_PROXY"};
    return root_->runAsUser(command, options);
  }
  ChildResult install() const {
    return run({"install", "--elevate", "--properties", kProperties, "--own-folder", kOwn});
  }
  std::string installed(const std::string& version) const {
    const std::string file = at(kMaster) + "/Quillory-Demo-" + version + "-complete/app.jar";
    return fs::exists(file) ? readFile(file) : "(none)";
  }
  std::string administratorsLog() const {
    std::string text;
    for (const auto& entry : fs::directory_iterator(at(kMaster) + "/logs"))
      text += readFile(entry.path().string());
    return text;
  }
  // Everything that is not the administrator's, or that others may write to.
  std::vector<std::string> open() const {
    std::vector<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(at(kMaster))) {
      struct stat its {};
      EXPECT_EQ(lstat(entry.path().c_str(), &its), 0);
      if (its.st_uid != 0 || (!S_ISLNK(its.st_mode) && (its.st_mode & 022) != 0))
        found.push_back(entry.path().string());
    }
    return found;
  }

  ReleaseFolder releases_;
  std::unique_ptr<Nginx> server_;
  UpdateSettings settings_;
  std::optional<PrivateRoot> root_;
};

TEST_F(InstallForAll, AsksForRightsAndInstallsWhatOnlyAnAdministratorMay) {
  const ChildResult refused = run({"install", "--properties", kProperties, "--own-folder", kOwn});
  EXPECT_EQ(refused.exitStatus, 4) << refused.out;
  EXPECT_EQ(installed("2"), "(none)") << "never silently";
  const ChildResult result = install();
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_THAT(result.out, HasSubstr("\nstep what=install component=application\n"));
  EXPECT_THAT(result.out, HasSubstr("\ndone version=2 release=2\n"));
  EXPECT_EQ(installed("2"), "version 2");
  EXPECT_THAT(open(), IsEmpty());
  EXPECT_THAT(install().out, HasSubstr("none newest=2"));
}

// Whatever is in the user's files: an installation is that of the program, and URL and keys are
// those beside it.
TEST_F(InstallForAll, BelievesNothingThatAUserCanWrite) {
  ReleaseFolder theirs;
  const pack::SigningKey& stolen = testKey("stolen");
  ReleaseList list = ReleaseFolder::list(
      9, {theirs.add(kApplicationRole, "Demo", "9", {{"app.jar", "evil"}}, stolen)});
  list.issued = std::time(nullptr) - kDay;
  list.expires = std::time(nullptr) + kDay;
  theirs.publish(list, {&stolen});
  const Nginx attacker(theirs.path());
  writeProperties(property("qystat_update_url", attacker.url()) +
                  property("qystat_qysig_public_key", stolen.publicHex()));
  // The state that the user's run goes by trusts that key, too.
  update::State state;
  state.keys = {stolen.publicHex()};
  fs::create_directories(at(kOwn) + "/QYUpdates");
  ASSERT_TRUE(update::writeState(state, at(kOwn) + "/QYUpdates"));
  ASSERT_EQ(chown((at(kOwn) + "/QYUpdates").c_str(), PrivateRoot::kUser, PrivateRoot::kUser), 0);
  const ChildResult result = install();
  EXPECT_THAT(result.out, HasSubstr("offer release=9 version=9")) << "the user's own run";
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_EQ(installed("9"), "(none)");
  EXPECT_EQ(installed("2"), "version 2") << "the administrator's";
  EXPECT_THAT(administratorsLog(),
              AllOf(HasSubstr(server_->url()), Not(HasSubstr(attacker.url()))));
}

TEST_F(InstallForAll, RefusesAnInstallationThatOthersCouldHaveWritten) {
  const std::string settings = std::string(kUpdaterFolder) + "/QuilloryUpdate";
  chmod(at(settings).c_str(), 0666);
  const ChildResult result = install();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("failed reason=" + update::percentEncoded(settings) +
                                    "%20could%20have%20been%20changed%20by%20another%20user"));
  chmod(at(settings).c_str(), 0644);
  // Nobody is asked for a password for a program that could be anybody's.
  root_->makeUserFolder("/Library/Application Support");
  const ChildResult before = install();
  EXPECT_EQ(before.exitStatus, 1);
  EXPECT_THAT(before.out, HasSubstr("could%20have%20been%20changed%20by%20another%20user"));
  EXPECT_EQ(installed("2"), "(none)");
  EXPECT_FALSE(fs::exists(at(kMaster) + "/QYUpdates"));
}

TEST_F(InstallForAll, SaysThatTheRightsWereNotGiven) {
  writeFile(at("/run/sudoers"), "Defaults env_reset\n");
  chmod(at("/run/sudoers").c_str(), 0440);
  const ChildResult result = install();
  EXPECT_EQ(result.exitStatus, 4);
  EXPECT_THAT(result.out, HasSubstr("rights%20were%20not%20given retry=1\n"));
  EXPECT_EQ(installed("2"), "(none)");
}

TEST_F(InstallForAll, IsForAdministratorsAlone) {
  const ChildResult result = run({"install-for-all"});
  EXPECT_EQ(result.exitStatus, 4);
  EXPECT_EQ(result.out, "failed reason=only%20an%20administrator%20can%20do%20that retry=0\n");
}

// By hand, or from what looks after many machines.
TEST_F(InstallForAll, CanBeStartedByTheAdministratorHimself) {
  ChildOptions options;
  options.unset = {"http_proxy", "https_proxy", "all_proxy", "ALL_PROXY"};
  const ChildResult result = root_->runAsRoot(
      {std::string(kUpdaterFolder) + "/quillory-update", "install-for-all"}, options);
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_EQ(installed("2"), "version 2");
  EXPECT_THAT(open(), IsEmpty());
}

}  // namespace
}  // namespace quillory::testing
