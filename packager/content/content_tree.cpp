#include "packager/content/content_tree.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "formats/archive_format.h"
#include "formats/record_stream.h"
#include "support/folder_listing.h"
#include "support/utf8.h"

namespace quillory::pack {
namespace {

// Deeper than any real tree.
constexpr std::size_t kDeepest = 64;
constexpr std::size_t kLongestName = 255;
constexpr mode_t kUncarried = S_ISUID | S_ISGID | S_ISVTX;

std::string pathInTree(const std::string& prefix, const std::string& name) {
  return prefix.empty() ? name : prefix + '/' + name;
}

std::vector<std::string> namesInside(const std::string& folder) {
  const auto names = listFolder(folder);
  if (!names) {
    throw PackError(std::string("cannot be listed: ") + std::strerror(errno), "", {folder, 0});
  }
  return *names;
}

// For comparing names as a file system does that ignores the case. Only ASCII letters are folded.
std::string folded(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return text;
}

template <typename Check>
bool anyComponent(const std::string& path, Check check) {
  std::size_t start = 0;
  for (;;) {
    const std::size_t slash = path.find('/', start);
    if (check(path.substr(start, slash - start))) {
      return true;
    }
    if (slash == std::string::npos) {
      return false;
    }
    start = slash + 1;
  }
}

}  // namespace

void ContentTree::note(Severity severity, const char* rule, const std::string& what,
                       const std::string& file, const std::string& advice) {
  noticed_.push_back({severity, rule, what, {file, 0}, advice});
}

void ContentTree::put(const std::string& path, const ContentEntry& entry) {
  const auto [place, isNew] = entries_.try_emplace(path, entry);
  if (!isNew && (place->second.kind != ContentEntry::Kind::kFolder ||
                 entry.kind != ContentEntry::Kind::kFolder)) {
    note(Severity::kError, "same-path",
         "two files of the " + name_ + " would be stored as \"" + path + "\"", entry.source,
         "rename one of them, or store it elsewhere with { from = \"...\", to = \"...\" }");
  }
}

void ContentTree::addFolder(const std::string& path) {
  if (!path.empty()) {
    put(path, {ContentEntry::Kind::kFolder, "", "", 0});
  }
}

void ContentTree::addBytes(std::string bytes, const std::string& path) {
  const std::uint64_t size = bytes.size();
  put(path, {ContentEntry::Kind::kBytes, "", std::move(bytes), size});
}

void ContentTree::addFolderContent(const std::string& source, const std::string& prefix) {
  struct stat info;
  if (stat(source.c_str(), &info) != 0) {
    throwFileError(source, "cannot be packed", errno);
  }
  addInside(source, prefix, {info.st_dev, info.st_ino});
}

void ContentTree::addInside(const std::string& source, const std::string& path, FileId id) {
  sources_.try_emplace(id, source);
  addFolder(path);
  above_.push_back(id);
  for (const std::string& name : namesInside(source)) {
    addAnything(source + '/' + name, pathInTree(path, name));
  }
  above_.pop_back();
}

// Behind the first loop no more links to folders are followed: a few links that lead to each other
// make more paths than anybody can wait for, and nothing of it will be packed.
bool ContentTree::leadsIntoALoop(const std::string& source, FileId id, bool isLink) {
  if (looped_ && isLink) {
    return true;
  }
  const bool repeats = std::find(above_.begin(), above_.end(), id) != above_.end();
  if (!repeats && above_.size() <= kDeepest) {
    return false;
  }
  looped_ = true;
  note(
      Severity::kError, "link-loop",
      repeats ? "the link leads back to a folder above it" : "the folders go deeper than 64 levels",
      source, repeats ? "remove it" : "look for a symbolic link that leads to its own parent");
  return true;
}

void ContentTree::addFile(const std::string& source, const std::string& path) {
  addAnything(source, path);
}

void ContentTree::removeFiles(const std::function<bool(const std::string&)>& isSuch) {
  std::erase_if(entries_, [&](const auto& entry) {
    return entry.second.kind != ContentEntry::Kind::kFolder && isSuch(entry.first);
  });
}

void ContentTree::replaceFile(const std::string& source, const std::string& path) {
  struct stat info;
  if (stat(source.c_str(), &info) != 0) {
    throwFileError(source, "cannot be packed", errno);
  }
  entries_.at(path) = {ContentEntry::Kind::kFile, source, "",
                       static_cast<std::uint64_t>(info.st_size)};
}

void ContentTree::addAnything(const std::string& source, const std::string& path) {
  struct stat info;
  if (lstat(source.c_str(), &info) != 0) {
    throwFileError(source, "cannot be packed", errno);
  }
  const bool isLink = S_ISLNK(info.st_mode);
  if (isLink) {
    if (stat(source.c_str(), &info) != 0) {
      note(Severity::kError, "dangling-link", "the symbolic link leads nowhere", source,
           "remove it, or make its target");
      return;
    }
    if (links_++ == 0) {
      firstLink_ = source;
    }
  }
  const FileId id(info.st_dev, info.st_ino);
  if ((info.st_mode & kUncarried) != 0 && S_ISREG(info.st_mode)) {
    note(Severity::kWarning, "mode",
         "the set-user, set-group or sticky bit is lost: archives hold no modes, and every "
         "installed file gets 755",
         source, "");
  }
  if (S_ISDIR(info.st_mode)) {
    if (!leadsIntoALoop(source, id, isLink)) {
      addInside(source, path, id);
    }
  } else if (S_ISREG(info.st_mode)) {
    sources_.try_emplace(id, source);
    put(path, {ContentEntry::Kind::kFile, source, "", static_cast<std::uint64_t>(info.st_size)});
  } else {
    note(Severity::kError, "not-a-file", "neither a file nor a folder", source, "leave it out");
  }
}

std::uint64_t ContentTree::totalBytes() const {
  std::uint64_t total = 0;
  for (const auto& [path, entry] : entries_) {
    total += entry.size;
  }
  return total;
}

std::string ContentTree::sourceOf(const std::string& path) const {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    return "";
  }
  const auto found = sources_.find({info.st_dev, info.st_ino});
  return found == sources_.end() ? "" : found->second;
}

void ContentTree::checkPath(const std::string& path, const ContentEntry& entry,
                            Findings& findings) const {
  const std::string quoted = "\"" + path + "\" of the " + name_;
  const auto add = [&](Severity severity, const char* rule, const std::string& what,
                       const char* advice) {
    findings.push_back({severity, rule, quoted + ' ' + what, {entry.source, 0}, advice});
  };
  if (path.size() > longestValue(kDefaultCapacity)) {
    add(Severity::kError, "path-length", "is longer than 1022 bytes, where the launcher cuts it",
        "shorten the names of the folders above it");
  }
  if (path.starts_with(kSpecialBlockPrefix)) {
    add(Severity::kError, "special-prefix",
        "begins with " + std::string(kSpecialBlockPrefix) + ", which is kept for signature blocks",
        "rename it");
  }
  if (path.empty() || path.front() == '/' || anyComponent(path, [](const std::string& part) {
        return part.empty() || part == "." || part == "..";
      })) {
    add(Severity::kError, "path", "is no path inside a folder: the launcher refuses it",
        "use relative paths without \"..\" and \".\"");
  }
  if (anyComponent(path, [](const std::string& part) { return part.size() > kLongestName; })) {
    add(Severity::kError, "name-length", "has a name of more than 255 bytes", "shorten it");
  }
  if (!isUtf8(path)) {
    add(Severity::kWarning, "file-name", "is not UTF-8: macOS cannot store such a name",
        "rename it");
  }
  if (entry.kind != ContentEntry::Kind::kFolder && entry.size == 0) {
    add(Severity::kWarning, "empty-file", "is empty: the launcher does not create empty files",
        "write something into it, or let the application make it");
  }
}

void ContentTree::checkCase(Findings& findings) const {
  std::map<std::string, std::string> seen;
  for (const auto& [path, entry] : entries_) {
    const auto [place, isNew] = seen.try_emplace(folded(path), path);
    if (!isNew) {
      findings.push_back({Severity::kWarning,
                          "case",
                          "\"" + place->second + "\" and \"" + path + "\" of the " + name_ +
                              " are one file on a disk that ignores the case, as macOS has it",
                          {entry.source, 0},
                          "rename one of them"});
    }
  }
}

Findings ContentTree::check() const {
  Findings findings = noticed_;
  if (links_ != 0) {
    const std::string number =
        links_ == 1 ? "a symbolic link is" : std::to_string(links_) + " symbolic links are";
    findings.push_back(
        {Severity::kNote,
         "link",
         number + " stored as copies in the " + name_ + ", because archives hold no links",
         {firstLink_, 0},
         ""});
  }
  for (const auto& [path, entry] : entries_) {
    checkPath(path, entry, findings);
  }
  checkCase(findings);
  return findings;
}

}  // namespace quillory::pack
