#include "packager/reading/plain_archive.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

#include "formats/archive_format.h"
#include "lzma/lzma_alone.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {
namespace {

constexpr std::size_t kBlock = 256 * 1024;

// Who looks at an archive should not take a full disk of his own for a fault of it.
[[noreturn]] void throwNoRoom(const PackError& e) {
  throw PackError("the archive cannot be put here to be looked at: " + std::string(e.what()),
                  "make room there, or set TMPDIR to another folder", {temporaryFolder(), 0});
}

class ScratchFile {
 public:
  explicit ScratchFile(const std::string& path) : file_(path, 0600, Durability::kLeftToTheSystem) {}

  void write(std::string_view bytes) {
    try {
      file_.write(bytes);
    } catch (const PackError& e) {
      throwNoRoom(e);
    }
  }
  void commit() {
    try {
      file_.commit();
    } catch (const PackError& e) {
      throwNoRoom(e);
    }
  }

 private:
  FileSink file_;
};

}  // namespace

void readRegion(const FileRegion& region, const std::function<void(std::string_view)>& take) {
  Findings ignored;
  RecordInput input(region.path, ignored);
  input.seek(region.offset);
  for (std::int64_t left = region.length; left > 0;) {
    stopIfInterrupted();
    const std::string block =
        input.bytes(static_cast<std::size_t>(std::min<std::int64_t>(left, kBlock)));
    if (block.empty()) {
      throw DamagedArchive("ends too early", "copy or download it again", {region.path, 0});
    }
    take(block);
    left -= static_cast<std::int64_t>(block.size());
  }
}

FileRegion wholeFile(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error) {
    throw PackError("cannot be opened: " + error.message(), "", {path, 0});
  }
  return {path, 0, static_cast<std::int64_t>(size)};
}

std::string temporaryFolder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

PlainArchive::PlainArchive(const FileRegion& region, bool compressed)
    : work_(std::make_unique<WorkFolder>(temporaryFolder())),
      path_(*work_ / archiveName("archive")) {
  ScratchFile file(path_);
  if (!compressed) {
    readRegion(region, [&](std::string_view block) { file.write(block); });
    file.commit();
    return;
  }
  LzmaCoder decoder = LzmaCoder::decoder([&file](const unsigned char* data, std::size_t size) {
    file.write({reinterpret_cast<const char*>(data), size});
    return true;
  });
  const auto check = [&](bool good) {
    if (!good) {
      throw DamagedArchive(decoder.error(), "pack or download it again", {region.path, 0});
    }
  };
  readRegion(region,
             [&](std::string_view block) { check(decoder.write(block.data(), block.size())); });
  check(decoder.finish());
  file.commit();
}

ArchiveListing PlainArchive::list(Findings& findings, const std::string& name) const {
  Findings found;
  RecordInput input(path_, found);
  ArchiveListing listing = listArchive(input, found, name);
  for (Finding& finding : found) {
    finding.place.file = name;
    findings.push_back(std::move(finding));
  }
  return listing;
}

std::string PlainArchive::contentOf(const ListedEntry& entry, std::size_t count) const {
  Findings ignored;
  RecordInput input(path_, ignored);
  input.seek(entry.contentAt);
  return input.bytes(
      std::min(count, static_cast<std::size_t>(std::max<std::int64_t>(0, entry.length))));
}

}  // namespace quillory::pack
