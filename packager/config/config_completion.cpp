#include "packager/config/config_completion.h"

#include "formats/update_url.h"
#include "packager/config/name_rules.h"

namespace quillory::pack {
namespace {

void completeApplication(Config& config) {
  ApplicationConfig& app = config.application;
  if (app.executable.empty()) {
    app.executable = executableNameFor(app.name);
  }
  if (app.displayVersion.empty()) {
    app.displayVersion = std::to_string(app.version);
  }
  if (app.identifier.empty()) {
    app.identifier = "local." + executableNameFor(app.name);
    config.filledIn.insert("application.identifier");
  }
}

}  // namespace

Config completed(Config config) {
  completeApplication(config);
  if (config.update.urlKind == UpdateUrlKind::kOff) {
    config.update.url = kInvalidUpdateURL;
  }
  config.application.jarsStored = config.application.jarsStored.value_or(config.update.hasClient);
  for (std::string* named : {&config.runtime.jdk, &config.runtime.jmods}) {
    *named = named->empty() ? "" : config.resolve(*named);
  }
  std::string& list = config.runtime.classList;
  if (!list.empty() && list != kAutomaticClassList && list != kNoClassList) {
    list = config.resolve(list);
  }
  return config;
}

}  // namespace quillory::pack
