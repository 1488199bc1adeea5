// Pieces of archives, written by hand as docs/formats/archive.md has them.
#pragma once
#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

inline std::string folderEntry(const std::string& path) { return records({"1", path}); }

inline std::string fileEntry(const std::string& path, const std::string& content,
                             const std::string& type = "0") {
  return records({type, path, std::to_string(content.size())}) + content;
}

/// The empty record that ends an archive.
inline std::string endOfArchive() { return std::string(1, '\0'); }

inline std::string signatureBlock(const std::string& offset, const std::string& hex) {
  return records({"0", "qyArcSpBlock_DigitalSignature1", "1", offset, hex});
}

/// What the signatures in tests/data/signatures are made over.
inline std::string signedBody() {
  return records({"1", "lib", "0", "lib/hello.txt", "5"}) + "hello";
}

/// A text of tests/data/signatures.
inline std::string signatureData(const std::string& name) {
  return readFile(QUILLORY_SOURCE_DIR "/tests/data/signatures/" + name + ".hex");
}

/// The bytes of such a text.
inline std::string fromHex(const std::string& hex) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < hex.size(); at += 2)
    bytes.push_back(static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, 16)));
  return bytes;
}

/// Everything below `folder`, sorted; folders and what links to one end in '/'.
inline std::vector<std::string> namesBelow(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    const std::string name = std::filesystem::relative(entry.path(), folder).string();
    names.push_back(entry.is_directory() ? name + '/' : name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// What a stand-in for waiting throws.
struct Waited : std::runtime_error {
  Waited() : std::runtime_error("waited for more") {}
};

/// An archive file and an empty folder to extract it into.
class ArchiveSite {
 public:
  ArchiveSite() { std::filesystem::create_directory(destDir()); }

  std::string archive() const { return dir_ / "app.p2"; }
  std::string destDir() const { return dir_ / "dest"; }
  std::string inDest(const std::string& name) const { return destDir() + '/' + name; }
  /// A path beside the destination folder.
  std::string beside(const std::string& name) const { return dir_ / name; }
  std::vector<std::string> extracted() const { return namesBelow(destDir()); }

 private:
  TempDir dir_;
};

}  // namespace quillory::testing
