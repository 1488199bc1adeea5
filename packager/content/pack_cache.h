// What packing takes long to make and can be had again: compressed archives, their pieces, and
// linked runtimes, kept in the user's cache folder under a digest of all that they are made of.
// Nobody has to look after it: it is limited, two runs may use it at the same time, each in several
// threads, what is damaged in it is noticed and made anew, and where it cannot be written nothing
// is kept.
#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "formats/sha256.h"
#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {

/// The digest that something is kept under: of texts and files, each with its length.
class CacheKey {
 public:
  /// `kind` keeps apart what is made in different ways.
  explicit CacheKey(std::string_view kind) { add(kind); }
  void add(std::string_view text);
  /// The content of a file. Throws PackError when it cannot be read.
  void addFile(const std::string& path);
  /// 64 hexadecimal digits; nothing may follow.
  std::string hex() { return digest_.hex(); }

 private:
  Sha256 digest_;
};

class PackCache {
 public:
  static constexpr std::uint64_t kStandardLimit = std::uint64_t{2} << 30;

  /// "": nothing is kept or found. The folder is made when something is kept; one that is another
  /// user's, or that others may write to, is not used.
  explicit PackCache(std::string folder, std::uint64_t limit = kStandardLimit);

  /// Writes what is kept under `key` to the file `output`. False, without such a file, where
  /// nothing is, and where it is damaged; that is removed.
  bool fetchFile(const std::string& key, const std::string& output);
  /// Keeps a copy of the file. What was not asked for the longest time goes when the limit is
  /// reached; what alone is larger is not kept.
  void keepFile(const std::string& key, const std::string& file);

  /// The same with bytes; none where nothing is.
  std::optional<std::string> fetchBytes(const std::string& key);
  void keepBytes(const std::string& key, std::string_view bytes);

  /// The same with the files of a folder: their bytes and which of them are programs. Links become
  /// copies. `folder` is not there yet when one is fetched, nor after that has failed.
  bool fetchFolder(const std::string& key, const std::string& folder);
  void keepFolder(const std::string& key, const std::string& folder);

 private:
  bool isUsable() const;
  void keep(const std::string& key, const std::function<void(ByteSink&)>& write);
  void makeRoom();

  std::string folder_;
  std::uint64_t limit_;
};

/// The user's: QUILLORY_PACK_CACHE, or the folder quillory-pack where the system has such things;
/// "" where that is not known.
std::string standardCacheFolder();
/// Where the system has a user's caches, "" when it is not known.
std::string userCacheFolder();

}  // namespace quillory::pack
