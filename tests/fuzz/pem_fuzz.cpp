// Reads any bytes as a key in PEM, as either half.
#include "packager/keys/public_key.h"
#include "packager/keys/signing_key.h"
#include "packager/report/findings.h"
#include "tests/fuzz/input_file.h"
#include "tests/fuzz/quiet.h"

using namespace quillory::pack;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Numbers of any length can be written down, and calculating with them takes minutes.
  if (size > 4096) return 0;
  const quillory::fuzz::InputFile file(data, size);
  try {
    PublicKey::load(file.path()).verifies(std::string(130, 'x'), Digest{});
  } catch (const PackError&) {
  }
  try {
    const SigningKey key = SigningKey::load(file.path());
    quillory::fuzz::promise(key.modulusBytes() > 0 && !key.publicDer().empty());
  } catch (const PackError&) {
  }
  return 0;
}
