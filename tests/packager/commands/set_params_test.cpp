#include "packager/commands/set_params.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/records.h"
#include "tests/packager/finished_bundle.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

using SetParameters = FinishedBundle;

TEST_F(SetParameters, ChangesOneAndAddsAnother) {
  const std::string before = readFile(tail());
  const CommandResult result = pack({"set", bundle_, "jre_name=Java", "channel=a=b c"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, params() + '\n');
  EXPECT_EQ(readFile(params()).substr(64), records({"4", "jre_name", "Java", "hardened", "true",
                                                    "error_dialog", "true", "channel", "a=b c"}));
  EXPECT_EQ(readFile(tail()), before);
}

TEST_F(SetParameters, RemovesAndKeepsWhatStandsBeforeTheMarker) {
  writeFile(params(), "text for others\n" + readFile(params()).substr(0, 64) +
                          records({"3", "a", "1", "b", "2", "a", "3"}));
  fs::permissions(params(), fs::perms(0640));
  EXPECT_EQ(pack({"set", params(), "--unset", "b", "a=4"}).status, 0);
  EXPECT_EQ(readFile(params()).substr(0, 16), "text for others\n");
  EXPECT_EQ(readFile(params()).substr(80), records({"1", "a", "4"}));
  EXPECT_EQ(modeOf(params()), 0640u);
}

TEST_F(SetParameters, LeavesTheFileAloneWhenAChangeMakesNoSense) {
  const std::string before = readFile(params());
  const std::vector<std::string> wrong[] = {{"novalue"},
                                            {"=x"},
                                            {"a=1", "force_spawn=yes"},
                                            {"show_no_ui=1"},
                                            {"jre_name=a-b"},
                                            {"jre_name="},
                                            {"jre_name=a:b"},
                                            {"jre_name=a/b"},
                                            {"jre_name=.."},
                                            {"update_url=https://"},
                                            {"update_url=https://x y/"},
                                            {"update_url=https://x/?a=b"},
                                            {"update_url=ftp://x"},
                                            {"--unset", "missing"},
                                            {std::string(1023, 'n') + "=x"}};
  for (std::vector<std::string> arguments : wrong) {
    arguments.insert(arguments.begin(), {"set", bundle_});
    const CommandResult result = pack(arguments);
    EXPECT_EQ(result.status, 1) << arguments.back();
    EXPECT_NE(result.err, "");
    EXPECT_EQ(readFile(params()), before);
  }
}

TEST_F(SetParameters, LeavesADamagedFileAlone) {
  const std::string marker = readFile(params()).substr(0, 64);
  for (const std::string& damaged :
       {records({"5", "jre_name", "JRE"}), records({"many", "a", "b"}), std::string("1\0a", 3),
        records({"1", std::string(1500, 'n'), "x"})}) {
    writeFile(params(), marker + damaged);
    for (const std::string& named : {bundle_, params()}) {
      const CommandResult result = pack({"set", named, "a=1"});
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.out, "");
      EXPECT_THAT(result.err,
                  HasSubstr(params() + ": error: is damaged, and stays as it is: the "));
      EXPECT_EQ(readFile(params()), marker + damaged);
    }
  }
}

TEST_F(SetParameters, TakesTheFileThatTheLauncherTakes) {
  const std::string other = bundle_ + "/Contents/Resources/params.lproj/locversion.plist";
  fs::create_directories(fs::path(other).parent_path());
  fs::rename(params(), other);
  EXPECT_EQ(pack({"set", bundle_, "a=b"}).out, other + '\n');
  fs::remove(other);
  EXPECT_EQ(pack({"set", bundle_, "a=b"}).status, 1);
}

}  // namespace
}  // namespace quillory::testing
