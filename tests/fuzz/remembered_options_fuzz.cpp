// Reads any bytes as the JVM options that the last start has remembered.
#include "formats/property_block.h"
#include "java/launch_properties.h"
#include "tests/fuzz/input_file.h"
#include "tests/fuzz/quiet.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const quillory::fuzz::InputFile file(data, size);
  quillory::PropertyBlock block;
  const auto options = quillory::readRememberedOptions(file.path(), block);
  quillory::fuzz::promise(options.size() <= size);
  return 0;
}
