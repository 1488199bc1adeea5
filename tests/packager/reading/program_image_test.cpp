#include "packager/reading/program_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/mach_o_bytes.h"

namespace quillory::pack {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::kArm;
using testing::kX86;
using testing::TempDir;
using testing::thinMachO;
using testing::universalMachO;
using testing::writeFile;

ProgramImage imageOf(const std::string& bytes) { return programImageOf(bytes, bytes.size()); }

TEST(ProgramImageOf, TellsAThinImageAndItsProcessor) {
  EXPECT_EQ(asText(imageOf(thinMachO(kX86))), "macOS (x86_64)");
  EXPECT_EQ(asText(imageOf(thinMachO(kArm))), "macOS (arm64)");
  EXPECT_EQ(asText(imageOf(thinMachO(18))), "macOS (processor 18)");
  const std::string of32Bits = "\xCE\xFA\xED\xFE\x07\0\0\0"s + std::string(20, '\0');
  EXPECT_EQ(asText(imageOf(of32Bits)), "macOS (i386)");
  EXPECT_EQ(imageOf(of32Bits.substr(0, 27)).system, "");
}

TEST(ProgramImageOf, TellsThePartsOfAUniversalFile) {
  const ProgramImage image = imageOf(universalMachO({kX86, kArm}));
  EXPECT_EQ(image.system, "macOS");
  EXPECT_THAT(image.architectures, ElementsAre("x86_64", "arm64"));
  EXPECT_TRUE(image.runsOn("arm64"));
  EXPECT_FALSE(image.runsOn("i386"));
  EXPECT_EQ(asText(image), "macOS (x86_64, arm64)");
}

TEST(ProgramImageOf, TellsThePartsOfAUniversalFileOfTheWideKind) {
  // Places and lengths have eight bytes, and each part a word of padding.
  const std::string file =
      "\xCA\xFE\xBA\xBF\0\0\0\x01"
      "\x01\0\0\x07\0\0\0\x03"
      "\0\0\0\0\0\0\0\x28"
      "\0\0\0\0\0\0\0\x24"
      "\0\0\0\x0c\0\0\0\0"s +
      thinMachO(kX86);
  EXPECT_EQ(file.size(), 0x28u + 0x24u);
  EXPECT_EQ(asText(imageOf(file)), "macOS (x86_64)");
  EXPECT_EQ(imageOf(file.substr(0, file.size() - 1)).system, "");
}

TEST(ProgramImageOf, TakesNoFileThatIsCutAnywhereForAProgramForMacOS) {
  for (const std::string& file : {thinMachO(kX86, ""), universalMachO({kX86, kArm})}) {
    for (std::size_t length = 0; length < file.size(); ++length) {
      const ProgramImage image = imageOf(file.substr(0, length));
      EXPECT_EQ(image.system, "") << length;
      EXPECT_THAT(image.architectures, IsEmpty()) << length;
    }
    EXPECT_EQ(imageOf(file).system, "macOS");
  }
}

TEST(ProgramImageOf, NeedsTheHeadOnlyWhereTheFileIsLong) {
  const std::string file = universalMachO({kX86, kArm});
  EXPECT_EQ(programImageOf(file.substr(0, 48), file.size()).system, "macOS");
  EXPECT_EQ(programImageOf(file.substr(0, 47), file.size()).system, "");
}

TEST(ProgramImageOf, TakesNoPartForOneThatOverlapsTheHeaderOrLiesBehindTheEnd) {
  const std::string file = universalMachO({kX86});
  const auto with = [&](std::size_t at, const std::string& bytes) {
    std::string changed = file;
    return imageOf(changed.replace(at, bytes.size(), bytes)).system;
  };
  EXPECT_EQ(with(16, "\0\0\0\x1c"s), "macOS");
  EXPECT_EQ(with(16, "\0\0\0\x1b"s), "");
  EXPECT_EQ(with(16, "\xFF\xFF\xFF\xFF"s), "");
  EXPECT_EQ(with(20, "\xFF\xFF\xFF\xFF"s), "");
  EXPECT_EQ(with(20, "\0\0\0\x1b"s), "");  // no header fits in
}

TEST(ProgramImageOf, TakesNoClassFileAndNoEndlessListForAUniversalFile) {
  const std::string rest(kImageHead, '\x01');
  EXPECT_EQ(imageOf("\xCA\xFE\xBA\xBE\0\0\0\x34"s + rest).system, "");
  EXPECT_EQ(imageOf("\xCA\xFE\xBA\xBE\xFF\xFF\xFF\xFF"s + rest).system, "");
  EXPECT_EQ(imageOf("\xCA\xFE\xBA\xBE\0\0\0\0"s + rest).system, "");
}

TEST(ProgramImageOf, TellsOtherSystemsByTheirFirstBytes) {
  EXPECT_EQ(asText(imageOf("\x7F"
                           "ELF rest")),
            "Linux");
  EXPECT_EQ(imageOf("\x7F"
                    "EL")
                .system,
            "");
  EXPECT_EQ(imageOf("MZ rest").system, "Windows");
  EXPECT_EQ(imageOf("#!/bin/sh").system, kScript);
  EXPECT_EQ(asText(imageOf("text")), "no known system");
  EXPECT_EQ(imageOf("").system, "");
}

TEST(ProgramImageIn, ReadsAFile) {
  const TempDir dir;
  writeFile(dir / "program", universalMachO({kX86, kArm}) + std::string(5000, 'x'));
  EXPECT_EQ(asText(programImageIn(dir / "program")), "macOS (x86_64, arm64)");
  EXPECT_THROW(programImageIn(dir / "missing"), PackError);
}

TEST(ProgramImageOf, TakesUniversalFilesOfUpTo30Parts) {
  const auto withParts = [](std::uint32_t count) {
    std::string file = "\xCA\xFE\xBA\xBE"s + testing::bigEndian(count);
    for (std::uint32_t i = 0; i < count; ++i) {
      file += testing::bigEndian(kX86) + testing::bigEndian(3) +
              testing::bigEndian(8 + 20 * count) + testing::bigEndian(32) + testing::bigEndian(0);
    }
    return imageOf(file + thinMachO(kX86)).architectures.size();
  };
  EXPECT_EQ(withParts(1), 1u);
  EXPECT_EQ(withParts(30), 30u);
  EXPECT_EQ(withParts(31), 0u);
}

}  // namespace
}  // namespace quillory::pack
