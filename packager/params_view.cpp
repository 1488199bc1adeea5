#include "packager/params_view.h"

#include <sys/stat.h>

#include <utility>

#include "packager/record_input.h"
#include "packager/record_writer.h"

namespace quillory::pack {

const std::string* ParamsView::find(const std::string& name) const {
  const std::string* value = nullptr;
  for (const auto& [key, candidate] : parameters) {
    if (key == name) {
      value = &candidate;
    }
  }
  return value;
}

std::optional<ParamsView> readParams(const std::string& path, Findings& findings) {
  RecordInput input(path, findings);
  if (!input.findMarker(paramsMarker())) {
    return std::nullopt;
  }
  ParamsView params;
  params.file = path;
  const std::int64_t records = input.position();
  input.seek(0);
  params.before = input.bytes(static_cast<std::size_t>(records) - paramsMarker().size());
  input.seek(records);
  const std::int64_t count = input.number("Params Count");
  for (std::int64_t i = 0; i < count && !input.atEnd(); ++i) {
    std::string name = input.text("Param Name");
    std::string value = input.text("Param Value", kParamValueCapacity);
    params.parameters.emplace_back(std::move(name), std::move(value));
  }
  if (static_cast<std::int64_t>(params.parameters.size()) < count) {
    findings.push_back({Severity::kError,
                        "cut-short",
                        "the file promises " + std::to_string(count) + " parameters and holds " +
                            std::to_string(params.parameters.size()),
                        {path, 0},
                        ""});
  }
  return params;
}

void writeParamsFile(const ParamsView& params) {
  struct stat info;
  const unsigned mode = stat(params.file.c_str(), &info) == 0 ? info.st_mode & 0777 : 0666;
  FileSink file(params.file, mode);
  file.write(params.before);
  writeParameters(file, params.parameters);
  file.commit();
}

}  // namespace quillory::pack
