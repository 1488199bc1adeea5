// Reads any bytes as a jar: its directory, its manifest.
#include "packager/content/jar_reader.h"
#include "packager/report/findings.h"
#include "tests/fuzz/input_file.h"
#include "tests/fuzz/quiet.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const quillory::fuzz::InputFile file(data, size);
  try {
    const quillory::pack::Jar jar(file.path());
    jar.hasClass("a.B");
    quillory::fuzz::promise(jar.manifestValue("Main-Class").find('\n') == std::string::npos);
  } catch (const quillory::pack::PackError&) {
  }
  return 0;
}
