// A folder that is gone, with everything in it, at the end of the scope; and small file helpers.
#pragma once
#include <filesystem>
#include <string>
#include <string_view>

namespace quillory::testing {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  /// The path as text, or that of something inside.
  std::string str() const { return path_.string(); }
  std::string operator/(std::string_view inside) const { return (path_ / inside).string(); }

 private:
  std::filesystem::path path_;
};

/// Writes a file, creating the folders above it.
void writeFile(const std::filesystem::path& path, std::string_view content);
/// The whole content; a test failure and "" when it cannot be read.
std::string readFile(const std::filesystem::path& path);
/// Permission bits of a file, as in chmod.
unsigned modeOf(const std::filesystem::path& path);

}  // namespace quillory::testing
