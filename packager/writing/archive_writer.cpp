#include "packager/writing/archive_writer.h"

#include "formats/archive_format.h"
#include "packager/report/findings.h"
#include "packager/writing/record_writer.h"
#include "packager/writing/signature_block.h"

namespace quillory::pack {
void ArchiveWriter::Tee::write(std::string_view bytes) {
  digest.update(bytes);
  count += bytes.size();
  next_.write(bytes);
}

void writeFileEntryHeader(ByteSink& sink, const std::string& path, std::uint64_t size) {
  RecordWriter records(sink);
  records.number(kEntryTypeRecord, kFileEntry);
  records.text(kEntryPathRecord, path);
  records.number(kEntryLengthRecord, static_cast<std::int64_t>(size));
}

void ArchiveWriter::identity(const ArchiveIdentity& identity) {
  writeFileEntryHeader(out_, identityPath(identity), 0);
}

void ArchiveWriter::folder(const std::string& path) {
  RecordWriter records(out_);
  records.number(kEntryTypeRecord, kFolderEntry);
  records.text(kEntryPathRecord, path);
}

void ArchiveWriter::bytes(const std::string& path, std::string_view content) {
  writeFileEntryHeader(out_, path, content.size());
  out_.write(content);
}

void ArchiveWriter::file(const std::string& path, const std::string& source, std::uint64_t size) {
  writeFileEntryHeader(out_, path, size);
  if (copyFileInto(out_, source) != size) {
    throw PackError("the file changed while it was packed", "pack again when it is at rest",
                    {source, 0});
  }
}

void ArchiveWriter::tree(const ContentTree& content) {
  for (const auto& [path, entry] : content.entries()) {
    if (entry.kind == ContentEntry::Kind::kFolder) {
      folder(path);
    } else if (entry.size == 0) {
      continue;
    } else if (entry.kind == ContentEntry::Kind::kBytes) {
      bytes(path, entry.bytes);
    } else {
      file(path, entry.source, entry.size);
    }
  }
}

void ArchiveWriter::end() { RecordWriter(out_).text(kEntryTypeRecord, ""); }

void ArchiveWriter::endSigned(const SigningKey& key, Salt salt) {
  // Past the digest: a signature does not cover itself.
  writeSignatureBlock(sink_, out_.count, out_.digest.finish(), key, salt);
}

}  // namespace quillory::pack
