#include "packager/writing/params_writer.h"

#include "formats/markers.h"
#include "packager/writing/record_writer.h"

namespace quillory::pack {

void writeParameters(ByteSink& sink, const Parameters& parameters) {
  sink.write(paramsMarker());
  RecordWriter records(sink);
  records.number(kParamsCountRecord, static_cast<std::int64_t>(parameters.size()));
  for (const auto& [name, value] : parameters) {
    records.text(kParamNameRecord, name);
    records.text(kParamValueRecord, value, kParamValueCapacity);
  }
}

}  // namespace quillory::pack
