// Reads any bytes as runner.cfg. The first byte is the number of slots.
#include "runner/config_entry.h"
#include "support/owned.h"
#include "tests/fuzz/quiet.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const quillory::OwnedFile stream(fmemopen(const_cast<std::uint8_t*>(data + 1), size - 1, "rb"));
  quillory::ArgumentList list(data[0]);
  const int found = quillory::readEntry(stream.get(), "app", list);
  quillory::fuzz::promise(list.count <= list.capacity());
  quillory::fuzz::promise(found != quillory::kEntryFound || list.count > 0);
  return 0;
}
