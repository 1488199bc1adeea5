// Reads any bytes as quillory.toml, and judges what comes out. Whatever is wrong has a place.
#include "packager/config/config.h"
#include "tests/fuzz/input_file.h"
#include "tests/fuzz/quiet.h"

using quillory::fuzz::promise;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const quillory::fuzz::InputFile file(data, size);
  quillory::pack::Findings findings;
  try {
    const quillory::pack::Config config = quillory::pack::loadConfig(file.path(), findings);
    promise(!config.application.name.empty() && !config.application.executable.empty());
    promise(!hasErrors(findings));
  } catch (const quillory::pack::RejectedInput& e) {
    promise(hasErrors(e.findings()));
    for (const quillory::pack::Finding& finding : e.findings()) {
      promise(finding.place.file == file.path() && !finding.what.empty());
    }
  }
  return 0;
}
