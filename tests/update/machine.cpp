#include "tests/update/machine.h"

#include <filesystem>

#include "install/version_folders.h"
#include "packager/writing/update_settings_writer.h"
#include "support/clock.h"
#include "support/folder_listing.h"
#include "update/installation.h"

namespace quillory::testing {

namespace fs = std::filesystem;

std::int64_t machineTime = kIssued + 10 * kDay;

std::string RunResult::line(const std::string& word) const {
  for (auto line = lines.rbegin(); line != lines.rend(); ++line)
    if (line->starts_with(word + ' ') || *line == word) return *line;
  return "";
}

std::string property(const std::string& key, const std::string& value) {
  return key + '\0' + value + '\0';
}

Machine::Machine(const ReleaseFolder& releases, const std::string& appVersion)
    : clock_(
          timeCalls.nowMillis, +[] { return static_cast<std::uint64_t>(machineTime) * 1000; }),
      sleep_(
          timeCalls.sleepMicros,
          +[](std::uint64_t micros) {
            machineTime += static_cast<std::int64_t>(micros / 1'000'000);
          }),
      quiet_(
          logCalls.show, +[](const char*, std::size_t) {}) {
  machineTime = kIssued + 10 * kDay;
  administrators = administratorsFolder_.str();
  transport.serve(kServer, releases.path());
  writeFile(updaterFolder() + "/QuilloryLaunch", "launch");
  writeFile(updaterFolder() + "/lzma64", "the tool");
  settings.keys = {testKey("working").publicHex(), testKey("reserve").publicHex()};
  writeSettings(settings);
  if (!appVersion.empty()) installApplication(appVersion, {{"app.jar", "version " + appVersion}});
}

std::string Machine::updaterFolder() const {
  return versionFolder(folder_.str(), kUpdaterName, "1");
}

void Machine::installApplication(const std::string& version, const Content& content) const {
  for (const auto& [path, bytes] : content)
    writeFile(versionFolder(folder_.str(), "Demo", version) + '/' + path, bytes);
}

void Machine::writeSettings(const UpdateSettings& written) const {
  writeFile(updaterFolder() + '/' + kUpdateSettingsFileName, pack::updateSettingsBytes(written));
}

update::Installation Machine::installation() const {
  const std::string path = updaterFolder() + "/QYLaunchProperties-1-1";
  writeFile(path, property("qystat_update_url", kServer) +
                      property("qystat_install_type", "perm_current") +
                      property("qystat_qysig_public_key", testKey("working").publicHex()) +
                      property("qystat_app_name", "Demo") +
                      property("qystat_wrapper_gu_version", "1") +
                      property("qystat_app_dir", updaterFolder()) +
                      property("qystat_jre_name", "JRE") + extraProperties);
  std::string why;
  return update::readInstallation(path, ownFolder, why).value();
}

RunResult Machine::run(update::Command command, const std::string& argument) {
  return runOn(installation(), command, argument);
}

RunResult Machine::runOn(const update::Installation& its, update::Command command,
                         const std::string& argument) {
  RunResult result;
  result.status = update::runCommand(
      {.command = command,
       .installation = its,
       .argument = argument,
       .transport = transport,
       .lines = [&](const update::Line& line) { result.lines.push_back(line.text()); },
       .administratorsFolder = administrators,
       .draw = draw,
       .elevate = elevate});
  return result;
}

std::vector<std::string> Machine::versions() const {
  std::vector<std::string> found;
  for (const std::string& name : quillory::namesIn(folder_.str()))
    if (componentOfFolder(name) == "Demo") found.push_back(name);
  return found;
}

std::string Machine::fileOf(const std::string& version, const std::string& path) const {
  const std::string file = versionFolder(folder_.str(), "Demo", version) + '/' + path;
  return fs::exists(file) ? readFile(file) : "(none)";
}

}  // namespace quillory::testing
