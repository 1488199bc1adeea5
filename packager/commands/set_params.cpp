#include "packager/commands/set_params.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "packager/bytes/byte_sinks.h"
#include "packager/config/parameter_rules.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/record_input.h"
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
  if (const std::optional<Flaw> flaw = flawOfParameter(name, value)) {
    throw PackError((name.empty() ? "a parameter" : name) + ' ' + flaw->what, flaw->advice);
  }
}

// The file anew, with what stood before the marker.
void writeParamsFile(const ParamsView& params) {
  struct stat info;
  const unsigned mode = stat(params.file.c_str(), &info) == 0 ? info.st_mode & 0777 : 0666;
  FileSink file(params.file, mode);
  file.write(params.before);
  writeParameters(file, params.parameters);
  file.commit();
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

}  // namespace quillory::pack
