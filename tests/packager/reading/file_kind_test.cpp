#include "packager/reading/file_kind.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "formats/markers.h"
#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::madeKey;
using testing::pageExample;
using testing::readFile;
using testing::records;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

TEST(FileKindNamed, FindsEachKindByItsName) {
  static constexpr struct {
    const char* name;
    FileKind kind;
  } kKinds[] = {{"bundle", FileKind::kBundle},
                {"tail", FileKind::kTail},
                {"executable", FileKind::kExecutable},
                {"parameters", FileKind::kParameters},
                {"archive", FileKind::kArchive},
                {"compressed-archive", FileKind::kCompressedArchive},
                {"launch-file", FileKind::kLaunchFile},
                {"launch-properties", FileKind::kLaunchProperties},
                {"remembered-options", FileKind::kRememberedOptions},
                {"version-file", FileKind::kVersionFile},
                {"key", FileKind::kSigningKey},
                {"release-list", FileKind::kReleaseList},
                {"delta", FileKind::kDelta},
                {"update-settings", FileKind::kUpdateSettings}};
  for (const auto& [name, kind] : kKinds) {
    EXPECT_EQ(fileKindNamed(name), kind) << name;
    EXPECT_EQ(fileKindNames().at(static_cast<std::size_t>(kind)), name);
  }
  EXPECT_EQ(fileKindNamed("Archive"), FileKind::kUnknown);
  EXPECT_EQ(fileKindNamed(""), FileKind::kUnknown);
}

class FileKindOf : public ::testing::Test {
 protected:
  FileKind kind(const std::string& name, const std::string& content) {
    writeFile(dir_ / name, content);
    return fileKindOf(dir_ / name);
  }
  FileKind byContent(const std::string& content) { return kind("file", content); }

  TempDir dir_;
};

TEST_F(FileKindOf, GoesByTheNameWhereItSaysSo) {
  const std::pair<const char*, FileKind> cases[] = {
      {"Tail", FileKind::kTail},
      {"QuilloryLaunch", FileKind::kLaunchFile},
      {"QYLaunchProperties-1234", FileKind::kLaunchProperties},
      {"JRE-LastSuccessfulOptions-App", FileKind::kRememberedOptions},
      {"Quillory-App-version.txt", FileKind::kVersionFile},
      {"QuilloryUpdate", FileKind::kUpdateSettings},
      {"Quillory-App-stable-releases", FileKind::kReleaseList},
      {"Quillory-App-stable-releases-17", FileKind::kReleaseList},
      {"Quillory-App-stable-releases7", FileKind::kSigningKey},
      {"Quillory-App-stable-releases-", FileKind::kSigningKey},
      {"Quillory-App-3-from-2-delta", FileKind::kDelta},
      {"app.p2.l2", FileKind::kCompressedArchive},
      {"app.p2", FileKind::kArchive}};
  for (const auto& [name, expected] : cases) {
    EXPECT_EQ(kind(name, "-----BEGIN "), expected) << name;
  }
  for (const char* name : {"Tails", "tail", "version.txt", "app.l2", "p2", "app.p2.old"}) {
    EXPECT_EQ(kind(name, "nothing known"), FileKind::kUnknown) << name;
  }
}

TEST_F(FileKindOf, GoesByTheContentOfOtherNames) {
  EXPECT_EQ(byContent(readFile(madeKey())), FileKind::kSigningKey);
  EXPECT_EQ(byContent("qystat_a=1\n"), FileKind::kLaunchProperties);
  EXPECT_EQ(byContent("qydyna_a=1\n"), FileKind::kLaunchProperties);
  EXPECT_EQ(byContent(std::string(70000, 'c') + tailMarker()), FileKind::kExecutable);
  EXPECT_EQ(byContent("text" + paramsMarker()), FileKind::kParameters);
  EXPECT_EQ(byContent(paramsMarker() + tailMarker()), FileKind::kExecutable);
  EXPECT_EQ(byContent("text"), FileKind::kUnknown);
  EXPECT_EQ(byContent(""), FileKind::kUnknown);
}

TEST_F(FileKindOf, KnowsACompressedArchiveByTheHeaderOfXz) {
  writeFile(dir_ / "content", "x");
  EXPECT_EQ(byContent(runChild({"xz", "--format=lzma", "-c", dir_ / "content"}).out),
            FileKind::kCompressedArchive);
  EXPECT_EQ(byContent(runChild({"xz", "--format=lzma", "--lzma1=lc=4,pb=0,dict=64KiB", "-c",
                                dir_ / "content"})
                          .out),
            FileKind::kCompressedArchive);
  EXPECT_EQ(byContent(std::string("\x04\0\0\x01\0text and no length", 22)), FileKind::kUnknown);
  EXPECT_EQ(byContent("\x5d"), FileKind::kUnknown);
  EXPECT_EQ(byContent("\x5d\x01"), FileKind::kUnknown);
}

TEST_F(FileKindOf, KnowsAnArchiveByItsFirstEntry) {
  EXPECT_EQ(byContent(pageExample("formats/archive.md", 1)), FileKind::kArchive);
  EXPECT_EQ(byContent(records({""})), FileKind::kArchive) << "an archive of nothing";
  EXPECT_EQ(byContent(records({"1", "lib"})), FileKind::kArchive);
  EXPECT_EQ(byContent(records({"0", "a", "5"})), FileKind::kArchive);
  EXPECT_EQ(byContent(records({"2", "a", "5"})), FileKind::kArchive);
  for (const std::string& other :
       {records({"", "more"}), records({"10", "a", "5"}), records({"x", "a", "5"}),
        records({"0", "", "5"}), records({"1", ""}), records({"0", "a", "five"}),
        records({"0", "a", ""}), records({"0", "a"}), std::string("0"), records({"0"})}) {
    EXPECT_EQ(byContent(other), FileKind::kUnknown) << ::testing::PrintToString(other);
  }
}

TEST_F(FileKindOf, TakesAFolderForABundleWhenItHasContents) {
  fs::create_directories(dir_ / "Hello.app/Contents");
  EXPECT_EQ(fileKindOf(dir_ / "Hello.app"), FileKind::kBundle);
  EXPECT_EQ(fileKindOf(dir_.str()), FileKind::kUnknown);
  EXPECT_EQ(fileKindOf(dir_ / "Hello.app/Contents"), FileKind::kUnknown);
}

TEST_F(FileKindOf, ReportsWhatIsNotThere) {
  try {
    fileKindOf(dir_ / "missing.p2");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()), dir_ / "missing.p2" + ": error: there is no such file");
  }
}

}  // namespace
}  // namespace quillory::pack
