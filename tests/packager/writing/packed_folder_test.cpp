#include "packager/writing/packed_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>

#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::modeOf;
using testing::readFile;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

class PackedFolder : public ::testing::Test {
 protected:
  PackedFolder() {
    writeFile(dir_ / "in/b/program", "#!/bin/sh\n");
    fs::permissions(dir_ / "in/b/program", fs::perms(0755));
    writeFile(dir_ / "in/a β.txt", "text");
    fs::permissions(dir_ / "in/a β.txt", fs::perms(0640));
    fs::create_directory(dir_ / "in/empty");
    fs::create_symlink("b/program", dir_ / "in/link");
  }
  void write(PackedFormat format, const std::string& name) {
    writePackedFolder(format, {{"Top", dir_ / "in"}, {"Top/more", "", "bytes", 0755}}, dir_ / name);
  }
  void expectWhole(const std::string& folder) {
    EXPECT_EQ(readFile(folder + "/Top/a β.txt"), "text");
    EXPECT_EQ(modeOf(folder + "/Top/a β.txt"), 0640u);
    EXPECT_EQ(modeOf(folder + "/Top/b/program"), 0755u);
    EXPECT_EQ(fs::read_symlink(folder + "/Top/link"), "b/program");
    EXPECT_TRUE(fs::is_directory(folder + "/Top/empty"));
    EXPECT_EQ(readFile(folder + "/Top/more"), "bytes");
    EXPECT_EQ(modeOf(folder + "/Top/more"), 0755u);
  }

  TempDir dir_;
};

// Read by programs that have nothing of ours.
TEST_F(PackedFolder, AsATarKeepsModesAndLinks) {
  write(PackedFormat::kTarXz, "out.tar.xz");
  fs::create_directory(dir_ / "out");
  ASSERT_EQ(runChild({"tar", "-xpJf", dir_ / "out.tar.xz", "-C", dir_ / "out"}).exitStatus, 0);
  expectWhole(dir_ / "out");
}

TEST_F(PackedFolder, AsAZipKeepsModesAndLinks) {
  write(PackedFormat::kZip, "out.zip");
  const auto told =
      runChild({"python3", "-c",
                "import sys, zipfile\n"
                "z = zipfile.ZipFile(sys.argv[1])\n"
                "assert z.testzip() is None\n"
                "for i in z.infolist():\n"
                "    print(ascii(i.filename), oct(i.external_attr >> 16), i.date_time,"
                " z.read(i).decode() if not i.is_dir() else '-')\n",
                dir_ / "out.zip"});
  EXPECT_EQ(told.out,
            "'Top/' 0o40755 (1980, 1, 1, 0, 0, 0) -\n"
            "'Top/a \\u03b2.txt' 0o100640 (1980, 1, 1, 0, 0, 0) text\n"
            "'Top/b/' 0o40755 (1980, 1, 1, 0, 0, 0) -\n"
            "'Top/b/program' 0o100755 (1980, 1, 1, 0, 0, 0) #!/bin/sh\n\n"
            "'Top/empty/' 0o40755 (1980, 1, 1, 0, 0, 0) -\n"
            "'Top/link' 0o120777 (1980, 1, 1, 0, 0, 0) b/program\n"
            "'Top/more' 0o100755 (1980, 1, 1, 0, 0, 0) bytes\n")
      << told.err;
}

TEST_F(PackedFolder, HasTheSameBytesAtAnotherTimeAndPlace) {
  for (const auto& [format, name] :
       {std::pair{PackedFormat::kZip, "a.zip"}, std::pair{PackedFormat::kTarXz, "a.tar.xz"}}) {
    write(format, name);
    const std::string first = readFile(dir_ / name);
    for (const char* file : {"in/b/program", "in/b", "in/a β.txt"}) {
      fs::last_write_time(dir_ / file, fs::file_time_type::clock::now() - std::chrono::hours(90));
    }
    write(format, name);
    EXPECT_EQ(readFile(dir_ / name), first);
  }
}

TEST_F(PackedFolder, LeavesNothingUnfinished) {
  writeFile(dir_ / "out/old.tar.xz", "old");
  writeFile(dir_ / "in/large", std::string(100'000, 'x'));
  const auto fails = [&](const std::string& what) {
    try {
      writePackedFolder(PackedFormat::kTarXz, {{"Top", what}}, dir_ / "out/old.tar.xz");
      return false;
    } catch (const PackError&) {
      return true;
    }
  };
  EXPECT_TRUE(fails(dir_ / "missing"));
  {
    const testing::FileSizeLimit full(50);
    EXPECT_TRUE(fails(dir_ / "in"));
  }
  EXPECT_EQ(mkfifo((dir_ / "in/pipe").c_str(), 0600), 0);
  EXPECT_TRUE(fails(dir_ / "in"));
  EXPECT_EQ(readFile(dir_ / "out/old.tar.xz"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir_ / "out"), fs::directory_iterator()), 1);
}

}  // namespace
}  // namespace quillory::pack
