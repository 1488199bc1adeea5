#include "packager/reading/launch_file_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::records;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

class ReadLaunchFile : public ::testing::Test {
 protected:
  LaunchFile read(const std::string& bytes, std::string_view last = "") {
    findings_.clear();
    writeFile(dir_ / "file", bytes);
    RecordInput input(dir_ / "file", findings_);
    LaunchFile file = readLaunchFile(input, last);
    behind_ = input.position();
    return file;
  }

  static std::string upTo(const std::string& version) {
    return records({version, "A", "B", "C", "D", "1", "64", "32", "2", "a.jar", "b.jar", "1", "x"});
  }

  TempDir dir_;
  Findings findings_;
  std::int64_t behind_ = 0;
};

TEST_F(ReadLaunchFile, ReadsEveryRecordInItsPlace) {
  const LaunchFile file = read(upTo("6") + records({"E", "F", "G", "1", "-Dy", "1"}));
  EXPECT_EQ(file.version, 6);
  EXPECT_EQ(file.mainClass + file.mainClassOnUpdate + file.appName + file.icns, "ABCD");
  EXPECT_TRUE(file.urlRequired);
  EXPECT_EQ(file.maximumHeap, 64);
  EXPECT_EQ(file.initialHeap, 32);
  EXPECT_THAT(file.classPath, ElementsAre("a.jar", "b.jar"));
  EXPECT_THAT(file.arguments, ElementsAre("x"));
  EXPECT_EQ(file.compatibilityClass + file.classAfterInstall + file.classBeforeUninstall, "EFG");
  EXPECT_THAT(file.jvmOptions, ElementsAre("-Dy"));
  EXPECT_TRUE(file.mustFork);
  EXPECT_TRUE(findings_.empty());
}

TEST_F(ReadLaunchFile, ReadsWhatItsVersionHas) {
  for (const auto& [version, bytes] :
       {std::pair{"2", ""}, std::pair{"3", "E\0"}, std::pair{"4", "E\0F\0G\0"}}) {
    SCOPED_TRACE(version);
    const std::size_t own = version[0] == '2' ? 0 : version[0] == '3' ? 2 : 6;
    const std::string whole = upTo(version) + std::string(bytes, own);
    const LaunchFile file = read(whole + records({"next"}));
    EXPECT_EQ(behind_, static_cast<std::int64_t>(whole.size()));
    EXPECT_EQ(file.compatibilityClass, own > 0 ? "E" : "");
    EXPECT_EQ(file.classBeforeUninstall, own > 2 ? "G" : "");
    EXPECT_THAT(file.jvmOptions, IsEmpty());
    EXPECT_FALSE(file.mustFork);
  }
}

TEST_F(ReadLaunchFile, StopsBehindTheRecordThatIsNamed) {
  const LaunchFile file = read(upTo("6"), kClassPathRecord.name);
  EXPECT_THAT(file.classPath, ElementsAre("a.jar", "b.jar"));
  EXPECT_THAT(file.arguments, IsEmpty());
  EXPECT_EQ(behind_, static_cast<std::int64_t>(upTo("6").size() - records({"1", "x"}).size()));
  EXPECT_TRUE(findings_.empty());
}

TEST_F(ReadLaunchFile, EndsAListWhereTheFileEnds) {
  const LaunchFile file =
      read(records({"6", "A", "B", "C", "D", "0", "0", "0", "2000000000", "a.jar"}));
  EXPECT_THAT(file.classPath, ElementsAre("a.jar"));
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"cut-short"});
}

}  // namespace
}  // namespace quillory::pack
