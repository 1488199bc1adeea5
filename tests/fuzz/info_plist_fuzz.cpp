// Reads any bytes as the Info.plist of a bundle.
#include "packager/content/info_plist.h"
#include "packager/reading/bundle_view.h"
#include "tests/fuzz/quiet.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string executable = quillory::pack::plistText(text, "CFBundleExecutable");
  // What this program would have written names its executable.
  quillory::fuzz::promise(!quillory::pack::isApplicationInfoPlist(text) || !executable.empty());
  return 0;
}
