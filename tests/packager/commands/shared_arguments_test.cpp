#include "packager/commands/shared_arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

using ::testing::ElementsAre;

TEST(SharedArguments, SetWhatTheyAreGiven) {
  std::string path;
  std::optional<int> level;
  std::string target;
  bool isWithout = false;
  EXPECT_EQ(configArgument(path).into, Argument::Destination(&path));
  EXPECT_EQ(compressionOption(level).into, Argument::Destination(&level));
  EXPECT_EQ(targetOption(target).into, Argument::Destination(&target));
  EXPECT_EQ(noCacheOption(isWithout).into, Argument::Destination(&isWithout));
}

TEST(SharedArguments, TakeLevelsAndSystemsThatThereAre) {
  std::optional<int> level;
  std::string target;
  EXPECT_EQ(compressionOption(level).numberRange, std::pair(0, 9));
  EXPECT_THAT(targetOption(target).choices, ElementsAre("linux", "macos"));
}

}  // namespace
}  // namespace quillory::pack
