// Reads any bytes as a release list: as they are, which nobody has signed, and in front of a
// signature block as a list that a trusted one has named, so that every record is reached.
#include "formats/release_list.h"
#include "formats/sha256.h"
#include "formats/signed_bytes.h"
#include "tests/fuzz/quiet.h"

using quillory::fuzz::promise;

namespace {

using namespace quillory;

std::string withBlock(const std::string& content) {
  std::string bytes = content;
  for (const std::string& value :
       {std::string("0"), std::string("qyArcSpBlock_DigitalSignature1"), std::string("1"),
        std::to_string(content.size()), std::string("aa")})
    bytes.append(value).push_back('\0');
  return bytes;
}

void promiseFile(const ReleaseFile& file) {
  promise(isPlainFileName(file.name) && isSha256Hex(file.sha256) && file.length > 0);
}

void promiseList(const ReleaseList& list, std::size_t size) {
  promise(isPlainFileName(list.application) && isChannelName(list.channel) && list.number > 0);
  promise(list.notes.size() <= kMaxNotesBytes && list.withdrawn.size() <= size);
  if (!list.steppingStone.name.empty()) promiseFile(list.steppingStone);
  promise(!list.components.empty() && list.components.size() <= kComponentRoles.size());
  for (const ReleaseComponent& component : list.components) {
    promise(componentOf(list, component.role) == &component);
    promise(isPlainFileName(component.name) && isComponentVersion(component.version));
    promiseFile(component.archive);
    for (const ReleaseDelta& delta : component.deltas) promiseFile(delta.file);
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string content(reinterpret_cast<const char*>(data), size);
  promise(!readReleaseListBytes(content, {}).list.has_value());
  const SignedBytes split = splitSignatureBlocks(content, kMaxListSignatures);
  for (const SignatureBlock& block : split.blocks)
    promise(block.offset < size && split.content.size() <= block.offset);

  const std::string bytes = withBlock(content);
  const ReleaseFile named{"list", static_cast<std::int64_t>(bytes.size()), sha256Hex(bytes)};
  const ReleaseListVerdict verdict = readSteppingStoneBytes(bytes, named);
  promise(verdict.list.has_value() == verdict.refusal.empty());
  if (verdict.list) promiseList(*verdict.list, size);
  return 0;
}
