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
  const Subject tool{"tool", {}};
  EXPECT_FALSE(unfitFor(Target::kMacOS, tool, kIntel));
  EXPECT_FALSE(unfitFor(Target::kMacOS, tool, kUniversal));
  EXPECT_FALSE(unfitFor(Target::kLinux, tool, kElf));
}

TEST(UnfitFor, SaysWhyNotOthers) {
  const auto flaw = [](Target target, const ProgramImage& image) {
    const auto found = unfitFor(target, {"tool", {"quillory.toml", 2}}, image);
    return found ? asText(*found) : "";
  };
  const std::string tool = "quillory.toml:2: error: tool ";
  EXPECT_EQ(flaw(Target::kMacOS, {}), tool + "is no program [platform]");
  EXPECT_EQ(flaw(Target::kMacOS, kElf),
            tool + "is for Linux, and the bundle is for macOS [platform]");
  EXPECT_EQ(flaw(Target::kLinux, kIntel),
            tool + "is for macOS (x86_64), and the bundle is for Linux [platform]");
  EXPECT_EQ(flaw(Target::kMacOS, kApple),
            tool + "is for macOS (arm64), and the bundle needs it for x86_64 [platform]");
  EXPECT_EQ(flaw(Target::kLinux, {kScript, {}}),
            tool + "is for a shell, and the bundle is for Linux [platform]");
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
