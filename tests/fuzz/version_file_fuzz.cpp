// Reads any bytes as a version file.
#include "formats/version_file_format.h"
#include "java/jre_download.h"
#include "support/owned.h"
#include "tests/fuzz/quiet.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const quillory::OwnedFile stream(fmemopen(const_cast<std::uint8_t*>(data), size, "rb"));
  const std::optional<std::string> version = quillory::readJreVersion(stream.get());
  quillory::fuzz::promise(!version ||
                          (version->size() <= quillory::kMaxVersionLength &&
                           version->find_first_of(quillory::kVersionEnds) == std::string::npos));
  return 0;
}
