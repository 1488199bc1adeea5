#include "packager/params_writer.h"

#include "formats/markers.h"
#include "packager/record_writer.h"
#include "support/owned.h"

namespace quillory::pack {

void writeParameters(ByteSink& sink, const Parameters& parameters) {
  sink.write(paramsMarker());
  RecordWriter records(sink);
  records.number("Params Count", static_cast<std::int64_t>(parameters.size()));
  for (const auto& [name, value] : parameters) {
    records.text("Param Name", name);
    records.text("Param Value", value, kParamValueCapacity);
  }
}

std::string paramsMarker() {
  const OwnedText marker(allocAndInitParamsMarker());
  return {marker.get(), kParamsMarkerLength};
}

}  // namespace quillory::pack
