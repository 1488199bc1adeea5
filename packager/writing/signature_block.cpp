#include "packager/writing/signature_block.h"

#include "formats/archive_format.h"
#include "packager/writing/record_writer.h"

namespace quillory::pack {

void writeSignatureBlock(ByteSink& sink, std::uint64_t count, const Digest& digest,
                         const SigningKey& key, Salt salt) {
  const std::string hex = toHex(key.sign(digest, salt));
  RecordWriter records(sink);
  records.number(kEntryTypeRecord, kFileEntry);
  records.text(kEntryPathRecord, kSignatureBlockPath);
  // Any number but 0, which would make the reader skip the block.
  records.number(kEntryLengthRecord, 1);
  records.number(kSignaturePlaceRecord, static_cast<std::int64_t>(count));
  records.text(kSignatureHexRecord, hex, kCheckedHexCapacity);
}

}  // namespace quillory::pack
