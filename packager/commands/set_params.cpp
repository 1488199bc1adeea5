#include "packager/commands/set_params.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "packager/bytes/abandoned.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/config/parameter_rules.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/record_input.h"
#include "packager/report/exit_statuses.h"
#include "packager/writing/params_writer.h"

namespace quillory::pack {
namespace {

// What a damaged file still holds is not what it held: writing that would lose the rest for good.
ParamsView readFrom(const std::string& path) {
  Findings found;
  std::optional<ParamsView> params;
  if (isBundle(path)) {
    BundleView bundle = readBundle(path, found);
    params = std::move(bundle.params);
  } else {
    params = readParams(path, found);
  }
  if (!params) {
    const auto unread = std::find_if(found.begin(), found.end(),
                                     [](const Finding& f) { return f.rule == "no-marker"; });
    throw noMarker(found, unread == found.end() ? path : unread->place.file,
                   "has no parameters file to change", "make the bundle again");
  }
  for (const Finding& finding : found) {
    if (finding.place.file == params->file) {
      throw PackError("is damaged, and stays as it is: " + finding.what, "make the bundle again",
                      finding.place);
    }
  }
  return std::move(*params);
}

void setOne(Parameters& parameters, const std::string& name, const std::string& value) {
  const auto isNamed = [&](const auto& pair) { return pair.first == name; };
  const auto first = std::find_if(parameters.begin(), parameters.end(), isNamed);
  if (first == parameters.end()) {
    parameters.emplace_back(name, value);
    return;
  }
  first->second = value;
  parameters.erase(std::remove_if(first + 1, parameters.end(), isNamed), parameters.end());
}

void check(const std::string& name, const std::string& value) {
  const Subject subject{name.empty() ? "a parameter" : name, {}};
  if (const std::optional<Finding> flaw = flawOfParameter(subject, name, value)) {
    throw PackError(flaw->what, flaw->advice);
  }
}

// The file anew, with what stood before the marker.
void writeParamsFile(const ParamsView& params) {
  removeAbandoned(std::filesystem::path(params.file).parent_path().string());
  struct stat info;
  const unsigned mode = stat(params.file.c_str(), &info) == 0 ? info.st_mode & 0777 : 0666;
  FileSink file(params.file, mode);
  file.write(params.before);
  writeParameters(file, params.parameters);
  file.commit();
}

struct SetOptions {
  std::string bundle;
  std::vector<std::string> changes;
  std::vector<std::string> removed;
};

int runSet(const SetOptions& options, Reporter& reporter) {
  const ParamsView params = setParameters(options.bundle, options.changes, options.removed);
  auto list = nlohmann::ordered_json::array();
  for (const auto& [name, value] : params.parameters) {
    list.push_back({{"name", name}, {"value", value}});
  }
  reporter.value("parameters", list);
  reporter.result(params.file);
  return kDone;
}

}  // namespace

ParamsView setParameters(const std::string& bundleOrFile, const std::vector<std::string>& changes,
                         const std::vector<std::string>& removed) {
  ParamsView params = readFrom(bundleOrFile);
  for (const std::string& change : changes) {
    const std::size_t equals = change.find('=');
    if (equals == std::string::npos) {
      throw PackError("\"" + change + "\" is no change", "write NAME=VALUE, or --unset NAME");
    }
    const std::string name = change.substr(0, equals);
    const std::string value = change.substr(equals + 1);
    check(name, value);
    setOne(params.parameters, name, value);
  }
  for (const std::string& name : removed) {
    const auto end = std::remove_if(params.parameters.begin(), params.parameters.end(),
                                    [&](const auto& pair) { return pair.first == name; });
    if (end == params.parameters.end()) {
      throw PackError("there is no parameter \"" + name + "\" to remove", "", {params.file, 0});
    }
    params.parameters.erase(end, params.parameters.end());
  }
  writeParamsFile(params);
  return params;
}

Command setCommand() {
  const auto options = std::make_shared<SetOptions>();
  return {
      "set",
      "changes dynamic parameters without touching what is code-signed",
      "quillory-pack set \"dist/My App.app\" update_url=https://example.com/u/",
      {{.name = "BUNDLE",
        .description = "a bundle, or its parameters file",
        .into = &options->bundle,
        .isRequired = true},
       {.name = "NAME=VALUE", .description = "parameters to set", .into = &options->changes},
       {.name = "--unset", .description = "a parameter to take away", .into = &options->removed}},
      [options](Reporter& reporter) { return runSet(*options, reporter); }};
}

}  // namespace quillory::pack
