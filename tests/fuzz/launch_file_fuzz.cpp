// Reads any bytes as a launch file: as the launcher does, and as quillory-pack shows it. Both get
// the same values.
#include "formats/launch_file.h"
#include "packager/reading/launch_file_view.h"
#include "support/owned.h"
#include "tests/fuzz/input_file.h"
#include "tests/fuzz/quiet.h"

using quillory::fuzz::promise;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const quillory::OwnedFile stream(fmemopen(const_cast<std::uint8_t*>(data), size, "rb"));
  const quillory::LaunchHeader header = quillory::readLaunchHeader(stream.get());
  const auto entries = quillory::readLaunchEntries(stream.get(), data[0] * 1000L, "entry");
  promise(entries.size() <= size);
  quillory::readLaunchTrailer(stream.get(), header.version);

  const quillory::fuzz::InputFile file(data, size);
  quillory::pack::Findings findings;
  quillory::pack::RecordInput input(file.path(), findings);
  const quillory::LaunchFile shown = quillory::pack::readLaunchFile(input);
  promise(shown.version == header.version && shown.classPath.size() <= size);
  return 0;
}
