#include <archive.h>
#include <archive_entry.h>
#include <locale.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <memory>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "packager/report/findings.h"
#include "packager/writing/packed_folder.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

// The first moment that a zip can tell, 1980.
constexpr std::time_t kEarliest = 315532800;
constexpr unsigned kPermissions = 0777;

struct ArchiveCloser {
  void operator()(archive* one) const { archive_write_free(one); }
};
struct EntryCloser {
  void operator()(archive_entry* one) const { archive_entry_free(one); }
};
using Entry = std::unique_ptr<archive_entry, EntryCloser>;

// Names are UTF-8, whatever the locale of whoever packs.
class Utf8Names {
 public:
  Utf8Names() : utf8_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
    if (utf8_ != nullptr) before_ = uselocale(utf8_);
  }
  ~Utf8Names() {
    if (utf8_ != nullptr) {
      uselocale(before_);
      freelocale(utf8_);
    }
  }
  Utf8Names(const Utf8Names&) = delete;
  Utf8Names& operator=(const Utf8Names&) = delete;

 private:
  locale_t utf8_;
  locale_t before_ = nullptr;
};

class PackedFolder : public ByteSink {
 public:
  PackedFolder(PackedFormat format, const std::string& output)
      : file_(output), name_(output), archive_(archive_write_new()) {
    if (format == PackedFormat::kZip) {
      require(archive_write_set_format_zip(archive_.get()));
      require(archive_write_set_options(archive_.get(), "zip:hdrcharset=UTF-8"));
    } else {
      require(archive_write_set_format_gnutar(archive_.get()));
      require(archive_write_add_filter_xz(archive_.get()));
      require(archive_write_set_options(archive_.get(), "xz:threads=1"));
    }
    require(archive_write_set_bytes_in_last_block(archive_.get(), 1));
    require(archive_write_open(archive_.get(), this, nullptr, take, nullptr));
  }

  void add(const std::string& path, const std::string& source) {
    stopIfInterrupted();
    struct stat info;
    if (lstat(source.c_str(), &info) != 0) {
      throwFileError(source, "cannot be packed", errno);
    }
    const Entry entry = entryFor(path, info.st_mode);
    if (S_ISLNK(info.st_mode)) {
      archive_entry_set_symlink(entry.get(), fs::read_symlink(source).c_str());
      require(archive_write_header(archive_.get(), entry.get()));
    } else if (S_ISDIR(info.st_mode)) {
      require(archive_write_header(archive_.get(), entry.get()));
      for (const std::string& name : namesIn(source)) {
        add(path + '/' + name, source + '/' + name);
      }
    } else if (S_ISREG(info.st_mode)) {
      archive_entry_set_size(entry.get(), info.st_size);
      require(archive_write_header(archive_.get(), entry.get()));
      copyFileInto(*this, source);
    } else {
      throw PackError("is neither a file nor a folder", "remove it", {source, 0});
    }
  }

  void addBytes(const PackedEntry& one) {
    const Entry entry = entryFor(one.path, S_IFREG | one.mode);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(one.bytes.size()));
    require(archive_write_header(archive_.get(), entry.get()));
    write(one.bytes);
  }

  // The content of the entry whose header came last.
  void write(std::string_view bytes) override {
    if (archive_write_data(archive_.get(), bytes.data(), bytes.size()) < 0) {
      fail();
    }
  }

  void finish() {
    require(archive_write_close(archive_.get()));
    file_.commit();
  }

 private:
  static la_ssize_t take(archive*, void* self, const void* data, std::size_t size) {
    auto* folder = static_cast<PackedFolder*>(self);
    try {
      folder->file_.write({static_cast<const char*>(data), size});
      return static_cast<la_ssize_t>(size);
    } catch (...) {  // not through the library
      folder->failure_ = std::current_exception();
      return -1;
    }
  }

  static Entry entryFor(const std::string& path, mode_t mode) {
    Entry entry(archive_entry_new());
    archive_entry_set_pathname(entry.get(), path.c_str());
    archive_entry_set_mode(entry.get(), (mode & S_IFMT) | (mode & kPermissions));
    archive_entry_set_mtime(entry.get(), kEarliest, 0);
    archive_entry_set_uid(entry.get(), 0);
    archive_entry_set_gid(entry.get(), 0);
    return entry;
  }

  void require(int result) {
    if (result < ARCHIVE_WARN) {
      fail();
    }
  }

  [[noreturn]] void fail() {
    if (failure_) {
      std::rethrow_exception(failure_);
    }
    const char* why = archive_error_string(archive_.get());
    throw PackError(std::string("cannot be written: ") + (why == nullptr ? "unknown" : why), "",
                    {name_, 0});
  }

  FileSink file_;
  std::string name_;
  std::exception_ptr failure_;
  std::unique_ptr<archive, ArchiveCloser> archive_;
};

}  // namespace

void writePackedFolder(PackedFormat format, const std::vector<PackedEntry>& entries,
                       const std::string& output) {
  const Utf8Names names;
  PackedFolder folder(format, output);
  for (const PackedEntry& entry : entries) {
    entry.source.empty() ? folder.addBytes(entry) : folder.add(entry.path, entry.source);
  }
  folder.finish();
}

}  // namespace quillory::pack
