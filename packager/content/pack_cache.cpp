#include "packager/content/pack_cache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "packager/bytes/abandoned.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "packager/report/findings.h"
#include "support/owned.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

// Behind the content of an entry stands the digest of its key and content, which tells a whole one.
constexpr std::size_t kReadAtOnce = 256 * 1024;
constexpr char kProgramMark = 'x';
constexpr char kFileMark = '-';
constexpr std::size_t kLongestHeader = 8192;

// Only for what this file throws at itself: an entry that is not what it should be.
struct Damaged {};

class HashingSink : public ByteSink {
 public:
  HashingSink(const std::string& key, ByteSink& next) : next_(next) { digest_.update(key); }
  void write(std::string_view bytes) override {
    digest_.update(bytes);
    next_.write(bytes);
  }
  std::string hex() { return digest_.hex(); }

 private:
  ByteSink& next_;
  Sha256 digest_;
};

// Hands out the content of an entry, and knows at its end whether it was whole.
class EntryReader {
 public:
  EntryReader(const std::string& path, const std::string& key)
      : file_(std::fopen(path.c_str(), "rb")) {
    struct stat info;
    if (!file_ || fstat(fileno(file_.get()), &info) != 0 || !S_ISREG(info.st_mode) ||
        info.st_size < static_cast<off_t>(kSha256HexLength)) {
      throw Damaged();
    }
    left_ = static_cast<std::uint64_t>(info.st_size) - kSha256HexLength;
    digest_.update(key);
  }

  std::uint64_t left() const { return left_; }

  void read(std::uint64_t count, const std::function<void(std::string_view)>& take) {
    while (count > 0) {
      stopIfInterrupted();
      const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, buffer_.size()));
      if (wanted > left_ || std::fread(buffer_.data(), 1, wanted, file_.get()) != wanted) {
        throw Damaged();
      }
      left_ -= wanted;
      count -= wanted;
      digest_.update({buffer_.data(), wanted});
      take({buffer_.data(), wanted});
    }
  }

  // Up to and without the next line break.
  std::string line() {
    std::string text;
    for (;;) {
      char byte = 0;
      read(1, [&](std::string_view one) { byte = one[0]; });
      if (byte == '\n') {
        return text;
      }
      text += byte;
      if (text.size() > kLongestHeader) {
        throw Damaged();
      }
    }
  }

  // Whether the content was what was kept.
  void requireWhole() {
    std::array<char, kSha256HexLength> stored{};
    if (left_ != 0 || std::fread(stored.data(), 1, stored.size(), file_.get()) != stored.size() ||
        digest_.hex() != std::string_view(stored.data(), stored.size())) {
      throw Damaged();
    }
  }

 private:
  OwnedFile file_;
  std::vector<char> buffer_ = std::vector<char>(kReadAtOnce);
  std::uint64_t left_ = 0;
  Sha256 digest_;
};

void removeQuietly(const std::string& path) {
  if (path.empty()) {
    return;
  }
  std::error_code ignored;
  fs::remove_all(path, ignored);
}

// Runs what reads an entry; one that is not whole is removed, and `made` with it.
bool readEntry(const std::string& entry, const std::string& made,
               const std::function<void()>& read) {
  if (!isFile(entry)) {
    return false;
  }
  try {
    read();
  } catch (const Damaged&) {
    removeQuietly(entry);
    removeQuietly(made);
    return false;
  } catch (...) {
    removeQuietly(made);
    throw;
  }
  utimensat(AT_FDCWD, entry.c_str(), nullptr, 0);  // it was asked for
  return true;
}

// Writes an entry, or nothing: a cache is no reason to fail.
void writeEntry(const std::string& entry, const std::string& key,
                const std::function<void(ByteSink&)>& write) {
  try {
    FileSink file(entry, 0600, Durability::kLeftToTheSystem);
    HashingSink hashed(key, file);
    write(hashed);
    file.write(hashed.hex());
    file.commit();
  } catch (const PackError&) {
    stopIfInterrupted();
  } catch (const fs::filesystem_error&) {
    // A file that went away while it was read, say.
  }
}

bool isEntryName(const std::string& name) {
  return name.size() == kSha256HexLength &&
         name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

}  // namespace

void CacheKey::add(std::string_view text) {
  digest_.update(std::to_string(text.size()) + ':');
  digest_.update(text);
}

void CacheKey::addFile(const std::string& path) {
  const std::optional<HashedFile> file = hashFile(path);
  if (!file) {
    throwFileError(path, "cannot be read", errno);
  }
  add(file->sha256);
}

PackCache::PackCache(std::string folder, std::uint64_t limit)
    : folder_(std::move(folder)), limit_(limit) {}

bool PackCache::isUsable() const {
  struct stat info;
  return !folder_.empty() && lstat(folder_.c_str(), &info) == 0 && S_ISDIR(info.st_mode) &&
         info.st_uid == geteuid() && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool PackCache::fetchFile(const std::string& key, const std::string& output) {
  const std::string entry = folder_ + '/' + key;
  return isUsable() && readEntry(entry, output, [&] {
           EntryReader reader(entry, key);
           FileSink file(output, 0666, Durability::kLeftToTheSystem);
           reader.read(reader.left(), [&](std::string_view bytes) { file.write(bytes); });
           reader.requireWhole();
           file.commit();
         });
}

void PackCache::keepFile(const std::string& key, const std::string& file) {
  keep(key, [&](ByteSink& sink) { copyFileInto(sink, file); });
}

std::optional<std::string> PackCache::fetchBytes(const std::string& key) {
  const std::string entry = folder_ + '/' + key;
  std::string bytes;
  const bool isThere =
      isUsable() && readEntry(entry, "", [&] {
        EntryReader reader(entry, key);
        bytes.reserve(reader.left());
        reader.read(reader.left(), [&](std::string_view block) { bytes.append(block); });
        reader.requireWhole();
      });
  return isThere ? std::optional(std::move(bytes)) : std::nullopt;
}

void PackCache::keepBytes(const std::string& key, std::string_view bytes) {
  keep(key, [&](ByteSink& sink) { sink.write(bytes); });
}

bool PackCache::fetchFolder(const std::string& key, const std::string& folder) {
  const std::string entry = folder_ + '/' + key;
  return isUsable() && readEntry(entry, folder, [&] {
           EntryReader reader(entry, key);
           while (reader.left() > 0) {
             const std::string path = reader.line();
             const std::string rest = reader.line();
             if (path.empty() || rest.size() < 2 || path.find("..") != std::string::npos) {
               throw Damaged();
             }
             const fs::path place = fs::path(folder) / path;
             fs::create_directories(place.parent_path());
             FileSink file(place.string(), rest[0] == kProgramMark ? 0777 : 0666,
                           Durability::kLeftToTheSystem);
             reader.read(std::strtoull(rest.c_str() + 1, nullptr, 10),
                         [&](std::string_view bytes) { file.write(bytes); });
             file.commit();
           }
           reader.requireWhole();
         });
}

void PackCache::keepFolder(const std::string& key, const std::string& folder) {
  keep(key, [&](ByteSink& sink) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) {
        files.push_back(entry.path());
      }
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
      const bool isProgram = access(file.c_str(), X_OK) == 0;
      sink.write(file.lexically_relative(folder).string() + '\n' +
                 (isProgram ? kProgramMark : kFileMark) + std::to_string(fs::file_size(file)) +
                 '\n');
      copyFileInto(sink, file.string());
    }
  });
}

void PackCache::keep(const std::string& key, const std::function<void(ByteSink&)>& write) {
  if (folder_.empty()) {
    return;
  }
  std::error_code error;
  if (!fs::exists(folder_, error)) {
    fs::create_directories(fs::path(folder_).parent_path(), error);
    mkdir(folder_.c_str(), 0700);
  }
  if (!isUsable()) {
    return;
  }
  // One at a time in this program: between the making of a file and its lock, the others would take
  // it for one that was left.
  static std::mutex writing;
  const std::lock_guard lock(writing);
  removeAbandoned(folder_);
  writeEntry(folder_ + '/' + key, key, write);
  makeRoom();
}

void PackCache::makeRoom() {
  struct Kept {
    fs::file_time_type asked;
    std::uint64_t size;
    fs::path path;
  };
  std::vector<Kept> all;
  std::uint64_t total = 0;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder_, error)) {
    std::error_code gone;
    const Kept kept{entry.last_write_time(gone), entry.file_size(gone), entry.path()};
    if (!gone && isEntryName(kept.path.filename().string())) {
      total += kept.size;
      all.push_back(kept);
    }
  }
  std::sort(all.begin(), all.end(), [](const Kept& a, const Kept& b) { return a.asked < b.asked; });
  for (const Kept& oldest : all) {
    if (total <= limit_) {
      break;
    }
    fs::remove(oldest.path, error);
    total -= oldest.size;
  }
}

std::string standardCacheFolder() {
  const char* named = std::getenv("QUILLORY_PACK_CACHE");
  if (named != nullptr) {
    return named;
  }
  const std::string folder = userCacheFolder();
  return folder.empty() ? "" : folder + "/quillory-pack";
}

}  // namespace quillory::pack
