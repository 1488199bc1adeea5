#include "packager/reading/archive_checks.h"

#include <gtest/gtest.h>

#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/mach_o_bytes.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::findingOf;
using testing::kArm;
using testing::kX86;
using testing::records;
using testing::rulesOf;
using testing::TempDir;
using testing::thinMachO;
using testing::writeFile;

using Rules = std::vector<std::string>;

const ProgramImage kLinux{"Linux", {}};
const ProgramImage kMacOS{"macOS", {"x86_64", "arm64"}};
const std::string kElfStart =
    "\x7F"
    "ELF";

class ArchiveChecks : public ::testing::Test {
 protected:
  static std::string file(const std::string& path, const std::string& content) {
    return records({"0", path, std::to_string(content.size())}) + content;
  }

  // An archive of these entries, looked into by `check`.
  template <typename Check>
  Findings checked(const std::string& entries, Check check) {
    writeFile(dir_ / "archive.p2", entries + records({""}));
    const PlainArchive archive(wholeFile(dir_ / "archive.p2"), false);
    Findings findings;
    const ArchiveListing listing = archive.list(findings, "app.p2");
    EXPECT_EQ(rulesOf(findings), Rules{});
    check(archive, listing, findings);
    return findings;
  }
  Findings program(const std::string& entries) {
    return checked(entries, [](const auto& archive, const auto& listing, Findings& findings) {
      checkProgramArchive(archive, listing, "app.p2", findings);
    });
  }
  Findings runtime(const std::string& entries, const ProgramImage& launcher = kLinux) {
    return checked(entries, [&](const auto& archive, const auto& listing, Findings& findings) {
      checkRuntimeArchive(archive, listing, "JRE.p2", launcher, findings);
    });
  }

  TempDir dir_;
};

// A launch file: version, main class, four more records, two of memory, the class path.
std::string launchFile(const std::string& mainClass, const std::string& maximum,
                       const std::string& initial, std::initializer_list<std::string_view> jars) {
  return records(
             {"6", mainClass, "", "App", "", "0", maximum, initial, std::to_string(jars.size())}) +
         records(jars);
}

TEST_F(ArchiveChecks, TakesAProgramWithALaunchFileAndItsJars) {
  EXPECT_EQ(rulesOf(program(
                file("lib/a.jar", "a") + file("b.jar", "b") +
                file("QuilloryLaunch", launchFile("Main", "256", "64", {"b.jar", "lib/a.jar"})))),
            Rules{});
}

TEST_F(ArchiveChecks, WantsALaunchFileOfTheRightSize) {
  EXPECT_EQ(asText(program(file("a.jar", "a")).at(0)),
            "app.p2: error: there is no launch file in the archive [no-launch-file]\n"
            "  -> make the bundle again");
  const std::string text = "the launch file is empty or far too long";
  EXPECT_EQ(findingOf(program(file("QuilloryLaunch", "")), "no-launch-file").what, text);
  const std::string launch = launchFile("Main", "0", "0", {});
  const std::size_t most = 1 << 20;
  EXPECT_EQ(
      rulesOf(program(file("QuilloryLaunch", launch + std::string(most - launch.size(), 'x')))),
      Rules{});
  EXPECT_EQ(
      rulesOf(program(file("QuilloryLaunch", launch + std::string(most - launch.size() + 1, 'x')))),
      Rules{"no-launch-file"});
}

TEST_F(ArchiveChecks, NamesEachJarThatIsMissing) {
  const Findings findings = program(
      file("b.jar", "b") +
      file("QuilloryLaunch", launchFile("Main", "0", "0", {"a.jar", "b.jar", "lib/b.jar"})));
  ASSERT_EQ(rulesOf(findings), (Rules{"class-path", "class-path"}));
  EXPECT_EQ(findings[0].what, "the class path names \"a.jar\", which is not in the archive");
  EXPECT_EQ(findings[1].what, "the class path names \"lib/b.jar\", which is not in the archive");
}

TEST_F(ArchiveChecks, WantsAMainClass) {
  EXPECT_EQ(rulesOf(program(file("QuilloryLaunch", launchFile("", "0", "0", {})))),
            Rules{"main-class"});
}

TEST_F(ArchiveChecks, RefusesAHeapThatBeginsBeyondItsLimit) {
  static constexpr struct {
    const char* maximum;
    const char* initial;
    bool isRefused;
  } kCases[] = {{"256", "257", true}, {"256", "256", false}, {"256", "0", false},
                {"0", "64", false},   {"-1", "64", false},   {"1", "2", true}};
  for (const auto& [maximum, initial, isRefused] : kCases) {
    const Findings found = program(file("QuilloryLaunch", launchFile("M", maximum, initial, {})));
    EXPECT_EQ(rulesOf(found), isRefused ? Rules{"memory"} : Rules{}) << maximum << ' ' << initial;
    EXPECT_EQ(hasErrors(found), isRefused) << maximum << ' ' << initial;
  }
}

TEST_F(ArchiveChecks, EndsAtALaunchFileThatPromisesTooMuch) {
  EXPECT_EQ(rulesOf(program(file("QuilloryLaunch", records({"6", "Main", "", "App", "", "0", "0",
                                                            "0", "2000000000"})))),
            Rules{"class-path"})
      << "what follows the launch file in the archive";
}

class RuntimeChecks : public ArchiveChecks {
 protected:
  const std::string java_ = file("Contents/Home/bin/java", kElfStart);
  const std::string jar_ = file("Contents/Home/lib/rt.jar", "PK");
  const std::string library_ = file("Contents/MacOS/libjli.so", "x");
};

TEST_F(RuntimeChecks, TakeOneWithJavaAJarAndOneLibrary) {
  EXPECT_EQ(rulesOf(runtime(java_ + jar_ + library_)), Rules{});
}

TEST_F(RuntimeChecks, WantJava) {
  const Findings findings = runtime(jar_ + library_);
  ASSERT_EQ(rulesOf(findings), Rules{"no-java"});
  EXPECT_EQ(findings[0].severity, Severity::kError);
  EXPECT_EQ(findings[0].place.file, "JRE.p2");
}

TEST_F(RuntimeChecks, WantAJarThatIsNotEmpty) {
  EXPECT_EQ(rulesOf(runtime(java_ + library_)), Rules{"no-rt-jar"});
  EXPECT_EQ(rulesOf(runtime(java_ + file("Contents/Home/lib/rt.jar", "") + library_)),
            Rules{"no-rt-jar"});
}

TEST_F(RuntimeChecks, CountTheFilesInMacOS) {
  const Finding none = findingOf(runtime(java_ + jar_), "runtime-executable");
  EXPECT_EQ(none.severity, Severity::kNote);
  EXPECT_EQ(none.what, "Contents/MacOS of the runtime holds 0 files, not one");
  EXPECT_EQ(findingOf(runtime(java_ + jar_ + library_ + file("Contents/MacOS/b", "b")),
                      "runtime-executable")
                .what,
            "Contents/MacOS of the runtime holds 2 files, not one");
}

TEST_F(RuntimeChecks, CompareTheProcessorsOfJavaAndLauncher) {
  const std::string macJava = file("Contents/Home/bin/java", thinMachO(kX86));
  EXPECT_EQ(rulesOf(runtime(macJava + jar_ + library_, kMacOS)), Rules{"architecture"});
  EXPECT_EQ(rulesOf(runtime(macJava + jar_ + library_, {"macOS", {"x86_64"}})), Rules{});
  EXPECT_EQ(rulesOf(runtime(macJava + jar_ + library_, kLinux)), Rules{"platform"});
}

TEST(CheckSamePlatform, RefusesOtherSystemsAndNoPrograms) {
  const auto said = [](const ProgramImage& program, const ProgramImage& launcher) {
    Findings findings;
    checkSamePlatform("lzma64", program, launcher, "the tail", findings);
    return findings.empty() ? "" : asText(findings[0]);
  };
  EXPECT_EQ(said(kLinux, kLinux), "");
  EXPECT_EQ(said({kScript, {}}, kMacOS), "");
  EXPECT_EQ(said({}, kLinux), "the tail: error: lzma64 is no program [platform]");
  EXPECT_EQ(said(kMacOS, kLinux),
            "the tail: error: lzma64 is for macOS (x86_64, arm64), the launcher is for Linux "
            "[platform]\n  -> pack both for one system");
  EXPECT_EQ(said(kLinux, {}),
            "the tail: error: lzma64 is for Linux, the launcher is for another system [platform]\n"
            "  -> pack both for one system");
}

TEST(RequireArchives, NamesEachPartWithAVersionAndWithoutAnArchive) {
  TailView tail;
  tail.file = "Tail";
  tail.records.appVersion = "1";
  tail.records.jreVersion = "2";
  tail.records.guVersion = "3";
  Findings findings;
  requireArchives(tail, findings);
  ASSERT_EQ(rulesOf(findings), (Rules{"missing-entry", "missing-entry", "missing-entry"}));
  EXPECT_EQ(asText(findings[0]),
            "Tail: error: the tail has a version of the updater and no archive at its place "
            "[missing-entry]\n  -> make the bundle again");
  EXPECT_NE(findings[1].what.find("of the runtime"), std::string::npos);
  EXPECT_NE(findings[2].what.find("of the application"), std::string::npos);
  findings.clear();
  tail.records = {};
  requireArchives(tail, findings);
  EXPECT_EQ(rulesOf(findings), Rules{});
}

}  // namespace
}  // namespace quillory::pack
