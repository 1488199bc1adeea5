// Undoes any bytes as a delta, from a folder with the files of the page's example: what comes out
// is what the header says, or nothing. Nothing is written beside it.
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "formats/sha256.h"
#include "tests/fuzz/quiet.h"
#include "update/delta.h"

using quillory::fuzz::promise;

namespace {

using namespace quillory;
namespace fs = std::filesystem;

constexpr std::int64_t kLargestHere = 1 << 20;

class Site {
 public:
  Site() {
    std::string name = (fs::temp_directory_path() / "delta-fuzz-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) abort();
    folder_ = name;
    fs::create_directories(folder_ / "base/lib");
    fs::create_directory(folder_ / "out");
    write("base/conf", "version 1\n");
    write("base/lib/a", "hello");
    fs::create_symlink("conf", folder_ / "base/link");
  }
  ~Site() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;

  std::string operator/(const char* name) const { return (folder_ / name).string(); }
  void write(const char* name, std::string_view bytes) const {
    std::ofstream(folder_ / name, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

 private:
  fs::path folder_;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Site site;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const DeltaHeaderResult read = readDeltaHeaderBytes(bytes);
  promise(read.header.has_value() == read.refusal.empty() && read.length <= size);
  if (!read.header || read.header->restoredLength > kLargestHere) return 0;
  for (const BaseFile& file : read.header->dictionary) promise(isBasePath(file.path));
  for (const DeltaCopy& copy : read.header->copies) promise(isBasePath(copy.file.path));

  site.write("delta", bytes);
  update::DeltaTask task;
  task.delta = site / "delta";
  task.installedFolder = site / "base";
  task.out = site / "out/archive";
  task.component = read.header->component;
  task.from = read.header->from;
  task.to = read.header->to;
  task.restoredLength = read.header->restoredLength;
  task.restoredSha256 = read.header->restoredSha256;
  task.memoryLimit = kDeltaMemoryBesideWindow + kLargestHere;
  const update::DeltaResult result = update::undoDelta(task);
  promise(result.isRestored() == result.reason.empty());
  if (result.isRestored()) {
    const auto made = hashFile(task.out);
    promise(made && made->length == task.restoredLength && made->sha256 == task.restoredSha256);
    fs::remove(task.out);
  }
  promise(fs::is_empty(site / "out"));
  return 0;
}
