#include "packager/reading/params_view.h"

#include <utility>

#include "formats/markers.h"
#include "formats/params_format.h"
#include "packager/reading/record_input.h"

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
  const std::int64_t count = input.number(kParamsCountRecord);
  for (std::int64_t i = 0; i < count && !input.atEnd(); ++i) {
    std::string name = input.text(kParamNameRecord);
    std::string value = input.text(kParamValueRecord, kParamValueCapacity);
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

}  // namespace quillory::pack
