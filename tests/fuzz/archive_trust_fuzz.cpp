// Looks through any bytes as an archive of a hardened bundle does.
#include "formats/archive_trust.h"
#include "tests/fuzz/input_file.h"
#include "tests/fuzz/quiet.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const quillory::fuzz::InputFile file(data, size);
  const quillory::ArchiveTrust trust{.key = nullptr, .isHardened = true};
  const auto found = quillory::inspectArchive(file.path(), trust);
  quillory::fuzz::promise(found.has_value());
  if (!found->refusal.empty()) return 0;
  // What is left for the signature to decide: it covers the identity, which stands at the start.
  const auto offset = static_cast<std::size_t>(found->signature.offset);
  quillory::fuzz::promise(found->signature.offset > 0 && offset < size && found->identity);
  const std::string path = quillory::identityPath(*found->identity);
  const std::string start(reinterpret_cast<const char*>(data), offset);
  const std::size_t at = start.find('\0') + 1;
  quillory::fuzz::promise(start.compare(at, path.size(), path) == 0);
  quillory::fuzz::promise(quillory::parseIdentityPath(path) == found->identity);
  return 0;
}
