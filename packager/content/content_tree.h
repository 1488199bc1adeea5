// What goes into an archive: folders and files under the paths that they will have, gathered from
// the disk, checked, and sorted, so that the same content always gives the same archive.
#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "packager/report/findings.h"

namespace quillory::pack {

struct ContentEntry {
  enum class Kind { kFolder, kFile, kBytes };
  Kind kind = Kind::kFolder;
  std::string source;  ///< kFile: where it is read from
  std::string bytes;   ///< kBytes: the content itself
  std::uint64_t size = 0;
};

class ContentTree {
 public:
  /// `name` is for messages: "application", "runtime".
  explicit ContentTree(std::string name) : name_(std::move(name)) {}

  /// Everything in the folder `source`, under `prefix` ("" or "a/b"). Symbolic links are followed
  /// and their targets stored as copies, because archives hold no links. Throws PackError when a
  /// folder cannot be listed; what is odd about single entries is left to check(): links that lead
  /// nowhere or into a loop, what is neither file nor folder, more than 64 levels of folders.
  void addFolderContent(const std::string& source, const std::string& prefix);
  /// A file, or a folder with everything in it, as `path`. Throws PackError when it is not there.
  void addFile(const std::string& source, const std::string& path);
  /// Takes out the files whose paths are such.
  void removeFiles(const std::function<bool(const std::string&)>& isSuch);
  /// The file `source` in the place of the one that is `path` so far, which is there.
  void replaceFile(const std::string& source, const std::string& path);
  /// A file that is made here.
  void addBytes(std::string bytes, const std::string& path);
  /// A folder, which may be there already; "" is none.
  void addFolder(const std::string& path);

  bool contains(const std::string& path) const { return entries_.count(path) != 0; }
  const std::string& name() const { return name_; }
  /// By path, in byte order; a folder comes before what is in it.
  const std::map<std::string, ContentEntry>& entries() const { return entries_; }
  /// Of all files.
  std::uint64_t totalBytes() const;
  /// Under which name a file or folder of the disk got in here; "" when it did not. Links to it
  /// count, and hard links.
  std::string sourceOf(const std::string& path) const;
  /// What was noticed while gathering and what the paths themselves break.
  Findings check() const;

 private:
  /// What a file or folder is on this machine, whatever its names: device and inode.
  using FileId = std::pair<std::uint64_t, std::uint64_t>;

  void addAnything(const std::string& source, const std::string& path);
  void addInside(const std::string& source, const std::string& path, FileId id);
  bool leadsIntoALoop(const std::string& source, FileId id, bool isLink);
  void put(const std::string& path, const ContentEntry& entry);
  void note(Severity severity, const char* rule, const std::string& what, const std::string& file,
            const std::string& advice);
  void checkPath(const std::string& path, const ContentEntry& entry, Findings& findings) const;
  void checkCase(Findings& findings) const;

  std::string name_;
  std::map<std::string, ContentEntry> entries_;
  Findings noticed_;
  std::map<FileId, std::string> sources_;
  std::vector<FileId> above_;  ///< the folders that lead to what is being gathered
  bool looped_ = false;
  std::string firstLink_;
  std::size_t links_ = 0;
};

}  // namespace quillory::pack
