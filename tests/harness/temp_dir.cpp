#include "tests/harness/temp_dir.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>

namespace quillory::testing {

namespace fs = std::filesystem;

TempDir::TempDir() {
  std::string name = (fs::temp_directory_path() / "quillory-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed: " + name);
  path_ = name;
}

TempDir::~TempDir() {
  std::error_code ignored;
  for (fs::recursive_directory_iterator entry(path_, ignored), end; entry != end;
       entry.increment(ignored)) {
    if (entry->is_directory(ignored) && !entry->is_symlink(ignored))
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
  }
  fs::remove_all(path_, ignored);
}

void writeFile(const fs::path& path, std::string_view content) {
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  EXPECT_TRUE(file) << "cannot write " << path;
}

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << "cannot read " << path;
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

unsigned modeOf(const fs::path& path) {
  return static_cast<unsigned>(fs::symlink_status(path).permissions()) & 07777U;
}

}  // namespace quillory::testing
