#include "packager/reading/archive_checks.h"

#include <algorithm>

#include "packager/reading/bundle_view.h"
#include "packager/reading/launch_file_view.h"
#include "packager/reading/target.h"

namespace quillory::pack {
namespace {

constexpr std::int64_t kLargestLaunchFile = 1 << 20;
constexpr char kHomePrefix[] = "Contents/Home/";

void add(Findings& findings, Severity severity, const char* rule, const std::string& what,
         const std::string& file, const std::string& advice) {
  findings.push_back({severity, rule, what, {file, 0}, advice});
}

void checkMemory(const LaunchFile& launch, const std::string& name, Findings& findings) {
  if (launch.maximumHeap > 0 && launch.initialHeap > launch.maximumHeap) {
    add(findings, Severity::kError, "memory",
        "the launch file begins with a heap of " + std::to_string(launch.initialHeap) +
            " MiB, more than the " + std::to_string(launch.maximumHeap) +
            " that it allows: Java refuses to start so",
        name, "make initial-memory-mb as large as memory-mb or smaller, and pack again");
  }
}

}  // namespace

void checkSamePlatform(const std::string& what, const ProgramImage& program,
                       const ProgramImage& launcher, const std::string& file, Findings& findings) {
  if (program.system.empty()) {
    add(findings, Severity::kError, "platform", what + " is no program", file, "");
  } else if (program.system != launcher.system && program.system != kScript) {
    add(findings, Severity::kError, "platform",
        what + " is for " + asText(program) + ", the launcher is for " +
            (launcher.system.empty() ? "another system" : asText(launcher)),
        file, "pack both for one system");
  }
}

void requireArchives(const TailView& tail, Findings& findings) {
  const auto require = [&](bool carried, const ListedEntry* archive, const char* part) {
    if (carried && archive == nullptr) {
      add(findings, Severity::kError, "missing-entry",
          std::string("the tail has a version of the ") + part + " and no archive at its place",
          tail.file, "make the bundle again");
    }
  };
  require(tail.carriesUpdater(), tail.updaterArchive(), "updater");
  require(tail.carriesRuntime(), tail.runtimeArchive(), "runtime");
  require(tail.carriesApplication(), tail.applicationArchive(), "application");
}

void checkProgramArchive(const PlainArchive& archive, const ArchiveListing& listing,
                         const std::string& name, Findings& findings) {
  const ListedEntry* launch = listing.find(kLaunchFileName);
  if (launch == nullptr) {
    add(findings, Severity::kError, "no-launch-file", "there is no launch file in the archive",
        name, "make the bundle again");
    return;
  }
  if (launch->length <= 0 || launch->length > kLargestLaunchFile) {
    add(findings, Severity::kError, "no-launch-file", "the launch file is empty or far too long",
        name, "");
    return;
  }
  Findings found;
  RecordInput input(archive.path(), found);
  input.seek(launch->contentAt);
  const LaunchFile file = readLaunchFile(input, kClassPathRecord.name);
  checkMemory(file, name, findings);
  for (const std::string& entry : file.classPath) {
    if (listing.find(entry) == nullptr) {
      add(findings, Severity::kError, "class-path",
          "the class path names \"" + entry + "\", which is not in the archive", name,
          "make the bundle again");
    }
  }
  if (file.mainClass.empty()) {
    add(findings, Severity::kError, "main-class", "the launch file names no main class", name, "");
  }
}

void checkRuntimeArchive(const PlainArchive& archive, const ArchiveListing& listing,
                         const std::string& name, const ProgramImage& launcher,
                         Findings& findings) {
  const ListedEntry* java = listing.find(std::string(kHomePrefix) + "bin/java");
  if (java == nullptr) {
    add(findings, Severity::kError, "no-java", "the runtime has no Contents/Home/bin/java", name,
        "make the bundle again");
  } else {
    const ProgramImage image = programImageOf(archive.contentOf(*java, kImageHead),
                                              static_cast<std::uint64_t>(java->length));
    checkSamePlatform("the runtime's java", image, launcher, name, findings);
    const Findings lacking = lintArchitectures(launcher, image, {name, 0});
    findings.insert(findings.end(), lacking.begin(), lacking.end());
  }
  const ListedEntry* jar = listing.find(std::string(kHomePrefix) + "lib/rt.jar");
  if (jar == nullptr || jar->length <= 0) {
    add(findings, Severity::kError, "no-rt-jar",
        "the runtime has no lib/rt.jar: the launcher takes it for broken and installs it at "
        "every "
        "start",
        name, "make the bundle again");
  }
  const auto inMacOS = std::count_if(
      listing.entries.begin(), listing.entries.end(),
      [](const ListedEntry& entry) { return entry.path.starts_with("Contents/MacOS/"); });
  if (inMacOS != 1) {
    add(findings, Severity::kNote, "runtime-executable",
        "Contents/MacOS of the runtime holds " + std::to_string(inMacOS) + " files, not one", name,
        "");
  }
}

}  // namespace quillory::pack
