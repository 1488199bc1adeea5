// Looks at any bytes as a splash picture, and as an icon.
#include "packager/content/icns.h"
#include "support/picture_limits.h"
#include "tests/fuzz/quiet.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const quillory::PictureFault fault = quillory::faultOfPicture(bytes);
  const bool isTaken = !quillory::pack::flawOfPicture({"it", {}}, bytes);
  // What is packed is shown.
  quillory::fuzz::promise(!isTaken || fault == quillory::PictureFault::kNone);
  quillory::pack::flawOfIcon({"it", {}}, bytes);
  return 0;
}
