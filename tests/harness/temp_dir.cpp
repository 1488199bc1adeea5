#include "tests/harness/temp_dir.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>

#include "tests/harness/own_folder.h"

namespace quillory::testing {

namespace fs = std::filesystem;

TempDir::TempDir() {
  std::string name = (ownFolder() / "test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed: " + name);
  path_ = name;
}

TempDir::~TempDir() { removeFolder(path_); }

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
