// Reads any bytes as a tail, as parameters and as an archive, as quillory-pack shows them.
#include "packager/reading/archive_listing.h"
#include "packager/reading/params_view.h"
#include "packager/reading/tail_view.h"
#include "tests/fuzz/input_file.h"
#include "tests/fuzz/quiet.h"

using namespace quillory::pack;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const quillory::fuzz::InputFile file(data, size);
  Findings findings;
  const auto tail = readTail(file.path(), false, findings);
  quillory::fuzz::promise(tail.has_value() && tail->entries.size() <= size);
  for (const ListedEntry* archive :
       {tail->updaterArchive(), tail->runtimeArchive(), tail->applicationArchive()}) {
    quillory::fuzz::promise(archive == nullptr || archive->length > 0);
  }
  findings.clear();
  if (const auto params = readParams(file.path(), findings)) {
    quillory::fuzz::promise(params->parameters.size() <= size);
  }
  findings.clear();
  RecordInput input(file.path(), findings);
  const ArchiveListing listing = listArchive(input, findings, "archive");
  quillory::fuzz::promise(listing.entries.size() <= size);
  return 0;
}
