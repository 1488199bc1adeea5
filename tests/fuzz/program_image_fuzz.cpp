// Looks at any bytes as the header of a program. The first two are the size of the whole file.
#include "packager/reading/program_image.h"
#include "packager/reading/target.h"
#include "tests/fuzz/quiet.h"

using namespace quillory::pack;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::string_view head(reinterpret_cast<const char*>(data + 2), size - 2);
  const ProgramImage image =
      programImageOf(head.substr(0, kImageHead), std::uint64_t{data[0]} * 256 + data[1]);
  quillory::fuzz::promise(image.architectures.empty() || image.system == "macOS");
  for (const Target target : {Target::kLinux, Target::kMacOS}) {
    const bool isNamed = targetNameOf(image) == nameOf(target);
    quillory::fuzz::promise(isNamed || unfitFor(target, {"it", {}}, image).has_value());
  }
  return 0;
}
