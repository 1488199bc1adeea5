#include "packager/content/native_symbols.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

TEST(NativeSymbols, TakesTheNamesOutOfLibrariesAndLeavesAllElse) {
  const TempDir dir;
  writeFile(dir / "a.c",
            "static int hidden(int x) { return x * 3; }\n"
            "int shown(int x) { return hidden(x) + hidden(x + 1); }\n");
  fs::create_directories(dir / "home/lib/server");
  const std::string library = dir / "home/lib/server/liba.so";
  ASSERT_EQ(
      runChild({"cc", "-g", "-O0", "-shared", "-fPIC", "-o", library, dir / "a.c"}).exitStatus, 0);
  ASSERT_NE(runChild({"nm", library}).out.find(" hidden\n"), std::string::npos);
  const std::string modules = std::string(
                                  "\x7f"
                                  "ELF",
                                  4) +
                              " is how this begins, and no more";
  writeFile(dir / "home/lib/modules", modules);
  writeFile(dir / "home/lib/text", "x");
  fs::create_symlink("server/liba.so", dir / "home/lib/link.so");
  EXPECT_TRUE(stripNativeSymbols(dir / "home"));
  EXPECT_EQ(runChild({"nm", library}).out.find(" hidden\n"), std::string::npos);
  EXPECT_NE(runChild({"nm", "-D", library}).out.find(" shown\n"), std::string::npos);
  EXPECT_EQ(readFile(dir / "home/lib/modules"), modules);
  EXPECT_EQ(readFile(dir / "home/lib/text"), "x");
  EXPECT_TRUE(fs::is_symlink(dir / "home/lib/link.so"));
  const std::string once = readFile(library);
  EXPECT_TRUE(stripNativeSymbols(dir / "home"));
  EXPECT_EQ(readFile(library), once);
}

TEST(NativeSymbols, StayWhereThereIsNoTool) {
  const TempDir dir;
  writeFile(dir / "home/lib/liba.so",
            "\x7f"
            "ELF");
  const std::string before = std::getenv("PATH");
  setenv("PATH", dir.str().c_str(), 1);
  const bool isStripped = stripNativeSymbols(dir / "home");
  setenv("PATH", before.c_str(), 1);
  EXPECT_FALSE(isStripped);
}

}  // namespace
}  // namespace quillory::pack
