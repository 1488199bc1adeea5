#include "packager/commands/init.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "packager/bytes/byte_sinks.h"
#include "packager/commands/initial_config.h"
#include "packager/content/app_image_application.h"
#include "packager/content/gradle_application.h"
#include "packager/content/jar_application.h"
#include "packager/report/exit_statuses.h"
#include "packager/report/findings.h"
#include "packager/report/joined.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

// Arguments that only another launcher completes.
void dropPlaceholders(std::vector<std::string>& arguments, std::vector<std::string>& dropped) {
  const auto first = std::stable_partition(
      arguments.begin(), arguments.end(),
      [](const std::string& argument) { return argument.find('$') == std::string::npos; });
  dropped.insert(dropped.end(), first, arguments.end());
  arguments.erase(first, arguments.end());
}

}  // namespace

FoundApplication findApplication(const std::string& folder) {
  for (const auto find : {findGradleApplication, findAppImage, findJarApplication}) {
    if (std::optional<FoundApplication> found = find(folder)) {
      return std::move(*found);
    }
  }
  throw PackError("there is no jar here, nor in target, build/libs, dist, out, lib or libs",
                  "build your application first, or go to its folder", {folder, 0});
}

void writeInitialConfig(const std::string& path, Reporter& reporter) {
  if (fs::exists(fs::symlink_status(path))) {
    throw PackError("exists already", "remove it first, or name another file", {path, 0});
  }
  const std::string parent = fs::path(path).parent_path().string();
  const std::string folder = parent.empty() ? "." : parent;
  FoundApplication found = findApplication(folder);
  std::vector<std::string> dropped = initialJvm(found.jvmOptions).leftOut;
  dropPlaceholders(found.arguments, dropped);
  writeWholeFile(path, initialConfig(found, folder));
  for (const std::string& reason : found.reasons) {
    reporter.line(reason);
  }
  if (!dropped.empty()) {
    reporter.line("left out, as only its old launcher understands it: " + joined(dropped, ", "));
  }
  if (found.mainClass.empty()) {
    reporter.line("main class: nothing here names it; write it into main-class");
  }
  reporter.value("configuration", path);
  reporter.result(path);
  reporter.line("Read it through, then: quillory-pack keygen && quillory-pack bundle");
}

Command initCommand() {
  const auto file = std::make_shared<std::string>("quillory.toml");
  return {"init",
          "writes a commented quillory.toml for the jars it finds",
          "quillory-pack init",
          {{.name = "FILE", .description = "the configuration to write", .into = file.get()}},
          [file](Reporter& reporter) {
            writeInitialConfig(*file, reporter);
            return kDone;
          }};
}

}  // namespace quillory::pack
