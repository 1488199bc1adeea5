#include "packager/reading/target.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

const ProgramImage kIntel{"macOS", {"x86_64"}};
const ProgramImage kApple{"macOS", {"arm64"}};
const ProgramImage kUniversal{"macOS", {"x86_64", "arm64"}};
const ProgramImage kElf{"Linux", {}};

TEST(Target, HasANameThatItIsFoundBy) {
  for (const Target target : {Target::kLinux, Target::kMacOS}) {
    EXPECT_EQ(targetNamed(nameOf(target)), target);
  }
  EXPECT_EQ(nameOf(Target::kMacOS), "macos");
  EXPECT_EQ(targetNamed("macOS"), std::nullopt);
  EXPECT_EQ(targetNamed(""), std::nullopt);
  EXPECT_EQ(targetNameOf(kApple), "macos");
  EXPECT_EQ(targetNameOf(kElf), "linux");
  EXPECT_EQ(targetNameOf({"Windows", {}}), "");
}

TEST(UnfitFor, TakesProgramsOfTheTarget) {
  EXPECT_EQ(unfitFor(Target::kMacOS, kIntel), "");
  EXPECT_EQ(unfitFor(Target::kMacOS, kUniversal), "");
  EXPECT_EQ(unfitFor(Target::kLinux, kElf), "");
}

TEST(UnfitFor, SaysWhyNotOthers) {
  EXPECT_EQ(unfitFor(Target::kMacOS, {}), "is no program");
  EXPECT_EQ(unfitFor(Target::kMacOS, kElf), "is for Linux, and the bundle is for macOS");
  EXPECT_EQ(unfitFor(Target::kLinux, kIntel), "is for macOS (x86_64), and the bundle is for Linux");
  EXPECT_EQ(unfitFor(Target::kMacOS, kApple),
            "is for macOS (arm64), and the bundle needs it for x86_64");
  EXPECT_EQ(unfitFor(Target::kLinux, {kScript, {}}), "is for a shell, and the bundle is for Linux");
}

TEST(LintArchitectures, WarnsWhereTheLauncherCannotLoadTheRuntime) {
  const Findings onArm = lintArchitectures(kUniversal, kIntel, {"quillory.toml", 9});
  ASSERT_EQ(testing::rulesOf(onArm), std::vector<std::string>{"architecture"});
  EXPECT_EQ(onArm[0].severity, Severity::kWarning);
  EXPECT_THAT(onArm[0].what, HasSubstr("runs on arm64 too"));
  EXPECT_THAT(lintArchitectures(kIntel, kApple, {}).at(0).what, HasSubstr("runs on x86_64 too"));
  EXPECT_THAT(lintArchitectures(kIntel, kUniversal, {}), IsEmpty());
  EXPECT_THAT(lintArchitectures(kUniversal, kUniversal, {}), IsEmpty());
  // What other systems run is not looked into, and a wrong system is an error of its own.
  EXPECT_THAT(lintArchitectures(kElf, kElf, {}), IsEmpty());
  EXPECT_THAT(lintArchitectures(kUniversal, kElf, {}), IsEmpty());
}

}  // namespace
}  // namespace quillory::pack
