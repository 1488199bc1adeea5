#include "tests/packager/project_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "packager/cli/command_line.h"
#include "tests/harness/child_process.h"

namespace quillory::testing {

namespace fs = std::filesystem;

Project::Project() {
  fs::copy_file(QUILLORY_HELLO_JAR, folder_ / "hello.jar");
  writeFile(folder_ / "launcher",
            "\x7f"
            "ELF, says this stand-in");
  writeFile(folder_ / "lzma64",
            "\x7f"
            "ELF, too");
  writeFile(folder_ / "jre/bin/java",
            "\x7f"
            "ELF java");
  writeFile(folder_ / "jre/lib/modules", "classes");
  writeFile(folder_ / "jre/lib/libjli.so", "library");
  writeFile(folder_ / "jre/release", "IMPLEMENTOR=\"Nobody\"\nJAVA_VERSION=\"17.0.9\"\n");
}

std::string Project::config(const std::string& extra) const {
  return "[bundle]\n"
         "launcher = \"launcher\"\n"
         "lzma64 = \"lzma64\"\n"
         "[updater]\n"
         "jar = \"" QUILLORY_UPDATER_JAR
         "\"\n"
         "[signing]\n"
         "key = \"" +
         key() +
         "\"\n"
         "salt = \"derived\"\n"
         "[application]\n"
         "name = \"Hello\"\n"
         "version = 3\n"
         "main-class = \"com.example.hello.Hello\"\n"
         "jars = [\"hello.jar\"]\n"
         "identifier = \"com.example.hello\"\n" +
         extra;
}

std::string Project::writeConfig(const std::string& text) const {
  writeFile(folder_ / "quillory.toml", text);
  return folder_ / "quillory.toml";
}

std::string Project::key() {
  static const TempDir folder;
  const std::string path = folder / "key.pem";
  if (!fs::exists(path)) {
    const ChildResult made = runChild({"openssl", "genrsa", "-traditional", "-out", path, "2048"});
    EXPECT_EQ(made.exitStatus, 0) << made.err;
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  }
  return path;
}

CommandResult pack(std::vector<std::string> arguments) {
  if (!arguments.empty() && arguments[0] == "bundle" &&
      std::find(arguments.begin(), arguments.end(), "--target") == arguments.end()) {
    arguments.insert(arguments.end(), {"--target", "linux"});
  }
  std::ostringstream out, err;
  const int status = quillory::pack::runCommandLine(arguments, out, err, false);
  return {status, out.str(), err.str()};
}

std::string bundleOf(const Project& project, const std::string& config) {
  const CommandResult result = pack({"bundle", "-q", project.writeConfig(config)});
  EXPECT_EQ(result.status, 0) << result.err;
  return result.out.substr(0, result.out.find('\n'));
}

std::vector<std::string> rulesOf(const pack::Findings& findings) {
  std::vector<std::string> rules;
  for (const pack::Finding& finding : findings) {
    rules.push_back(finding.rule);
  }
  return rules;
}

bool hasRule(const pack::Findings& findings, const std::string& rule) {
  for (const pack::Finding& finding : findings) {
    if (finding.rule == rule) {
      return true;
    }
  }
  return false;
}

pack::Finding findingOf(const pack::Findings& findings, const std::string& rule) {
  for (const pack::Finding& finding : findings) {
    if (finding.rule == rule) {
      return finding;
    }
  }
  ADD_FAILURE() << "no finding " << rule << " among "
                << ::testing::PrintToString(rulesOf(findings));
  return {};
}

}  // namespace quillory::testing
