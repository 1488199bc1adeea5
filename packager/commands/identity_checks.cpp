#include "packager/commands/identity_checks.h"

#include <filesystem>

#include "formats/version_file_format.h"
#include "install/version_folders.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/reading/target.h"

namespace quillory::pack {
namespace {

// The component and version of a place in the tail; of an archive that has none of the places
// nothing is expected.
std::optional<ArchiveIdentity> partAt(const TailView& tail, const ListedEntry& entry,
                                      const std::string& jreName) {
  if (&entry == tail.updaterArchive()) {
    return ArchiveIdentity{kUpdaterName, tail.records.guVersion, ""};
  }
  if (&entry == tail.applicationArchive()) {
    return ArchiveIdentity{tail.records.appName, tail.records.appVersion, ""};
  }
  if (&entry == tail.runtimeArchive()) {
    return ArchiveIdentity{jreName, tail.records.jreVersion, ""};
  }
  return std::nullopt;
}

bool isForPlatform(const std::string& packedFor, const std::string& platform) {
  return platform.empty() || packedFor == kAnyPlatform ||
         packedFor.substr(0, packedFor.find('-')) == platform;
}

}  // namespace

ExpectedArchives expectedArchivesOf(const BundleView& bundle) {
  ExpectedArchives expected;
  if (isFile(bundle.executable)) {
    expected.platform = targetNameOf(programImageIn(bundle.executable));
  }
  if (bundle.params) {
    const std::string* name = bundle.params->find("jre_name");
    const std::string* hardened = bundle.params->find("hardened");
    expected.jreName = name == nullptr ? "" : *name;
    expected.isHardened = hardened != nullptr && *hardened == "true";
  }
  return expected;
}

void checkIdentity(const TailView& tail, const ListedEntry& entry, const Verdict& verdict,
                   const ExpectedArchives& expected, const std::string& name, Findings& findings) {
  const std::optional<ArchiveIdentity>& said = verdict.identity;
  const std::optional<ArchiveIdentity> part = partAt(tail, entry, expected.jreName);
  if (!part) {
    return;
  }
  if (expected.isHardened && verdict.trust == Trust::kUnsigned) {
    findings.push_back({Severity::kError,
                        "identity",
                        "the archive is not signed: a hardened launcher refuses it",
                        {name, 0},
                        "make the bundle again, with a key"});
  }
  if (!said) {
    if (expected.isHardened) {
      findings.push_back({Severity::kError,
                          "identity",
                          "the archive does not say what it is: a hardened launcher refuses it",
                          {name, 0},
                          "make the bundle again"});
    }
    return;
  }
  const bool isNamed = part->component.empty() || said->component == part->component;
  if (!isNamed || said->version != part->version ||
      !isForPlatform(said->platform, expected.platform)) {
    findings.push_back({Severity::kError,
                        "identity",
                        "the archive is " + asText(*said) + ", in the place of " +
                            (part->component.empty() ? "a runtime" : part->component) + ' ' +
                            part->version +
                            (expected.platform.empty() ? "" : " (" + expected.platform + ')'),
                        {name, 0},
                        "somebody has exchanged archives: make the bundle again"});
  }
}

void checkReleaseIdentity(const std::string& path, const std::optional<ArchiveIdentity>& said,
                          Findings& findings) {
  const std::string name = std::filesystem::path(path).filename().string();
  const std::string nameless = releaseArchiveName("", "");
  const std::string end = nameless.substr(nameless.rfind('-'));
  if (!said || !name.starts_with(kReleasePrefix) || !name.ends_with(end) ||
      name == releaseArchiveName(said->component, said->version)) {
    return;
  }
  findings.push_back({Severity::kError,
                      "identity",
                      "the archive is " + asText(*said) + ", and is not named so",
                      {path, 0},
                      "somebody has exchanged archives: copy the release files again"});
}

}  // namespace quillory::pack
