#include "packager/commands/doctor.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <utility>

#include "formats/params_format.h"
#include "formats/tail_format.h"
#include "formats/update_url.h"
#include "install/version_folders.h"
#include "packager/commands/identity_checks.h"
#include "packager/commands/release_source.h"
#include "packager/commands/server_check.h"
#include "packager/commands/trusted_keys.h"
#include "packager/commands/verify.h"
#include "packager/config/name_rules.h"
#include "packager/reading/archive_checks.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/quarantine.h"
#include "packager/reading/target.h"
#include "packager/report/exit_statuses.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

class Doctor {
 public:
  Diagnosis run(const std::string& path) {
    if (!isBundle(path)) {
      throw PackError("is no application bundle: it has no folder Contents", "", {path, 0});
    }
    bundle_ = readBundle(path, findings_);
    checkExecutable();
    checkSignature();
    checkPlace();
    if (bundle_.tail) {
      checkTail(*bundle_.tail);
    }
    return {launcher_, std::move(findings_)};
  }

 private:
  void add(Severity severity, const char* rule, const std::string& what, const std::string& file,
           const std::string& advice) {
    findings_.push_back({severity, rule, what, {file, 0}, advice});
  }

  void checkExecutable() {
    if (bundle_.executable.empty() || !fs::is_regular_file(bundle_.executable)) {
      return;
    }
    if (access(bundle_.executable.c_str(), X_OK) != 0) {
      add(Severity::kError, "not-executable", "the executable may not be executed",
          bundle_.executable, "chmod 755 \"" + bundle_.executable + '"');
    }
    launcher_ = programImageIn(bundle_.executable);
    if (launcher_.system != systemOf(Target::kMacOS)) {
      add(Severity::kWarning, "platform",
          "the executable is for " + asText(launcher_) + ": a Mac does not start it",
          bundle_.executable, "for Macs pack it with --target macos");
    }
  }

  // What a user of a Mac sees of a bundle that came over the network, and why.
  void checkPlace() {
    if (isTranslocated(bundle_.folder)) {
      add(Severity::kWarning, "translocated",
          "macOS starts this bundle from a place of its own, at another path each time, because it "
          "was downloaded and has not been moved since",
          bundle_.folder, "move it with the Finder, into Applications say, and start it there");
    } else if (isQuarantined(bundle_.folder)) {
      add(Severity::kWarning, "quarantined",
          "macOS has noted that this bundle was downloaded: it asks before the first start",
          bundle_.folder,
          "docs/packaging.md tells what users see; for a test of your own: xattr -dr "
          "com.apple.quarantine on the bundle");
    }
  }

  void checkSignature() {
    const bool sealed = fs::is_directory(bundle_.inside("_CodeSignature"));
    if (!sealed && launcher_.system == systemOf(Target::kMacOS)) {
      add(Severity::kWarning, "not-signed",
          "the bundle's code is not signed: macOS refuses it when it was downloaded",
          bundle_.folder, "docs/packaging.md tells how to sign and notarize it");
    }
    if (launcher_.system == systemOf(Target::kMacOS) && bundle_.params &&
        fs::path(bundle_.params->file).filename() == kParamsFileName) {
      add(Severity::kWarning, "sealed-parameters",
          "a code signature covers the parameters where they are: set breaks it",
          bundle_.params->file, "pack it again: they get a place that signatures leave out");
    }
    if (sealed && bundle_.tail && bundle_.tail->inExecutable) {
      add(Severity::kError, "tail-in-signed-code",
          "the tail stands inside the signed executable, where no signature allows it",
          bundle_.executable, "tail = \"file\" in [bundle]");
    }
  }

  void checkTail(const TailView& tail) {
    checkNames(tail);
    checkVersions(tail);
    checkUpdates(tail);
    checkElevation(tail);
    checkTool(tail);
    checkArchives(tail);
  }

  std::string jreName() const {
    const std::string* name = bundle_.params ? bundle_.params->find("jre_name") : nullptr;
    return name == nullptr ? "" : *name;
  }

  void checkName(const char* what, const std::string& name, const std::string& version,
                 bool (*isUsable)(std::string_view, std::string_view)) {
    if (name.find('-') != std::string::npos) {
      add(Severity::kError, "name-dash",
          std::string(what) + " \"" + name +
              "\" holds a \"-\": its folders are never found again, so every start installs anew",
          bundle_.folder, "choose a name without it");
    }
    if (!isUsable(name, version)) {
      add(Severity::kError, "name",
          std::string(what) + " \"" + name + "\" cannot be part of a folder's name", bundle_.folder,
          "choose a shorter name without \"/\"");
    }
  }

  void checkNames(const TailView& tail) {
    const std::string& app = tail.records.appName;
    if (app.empty()) {
      add(Severity::kError, "name", "the tail has no application name", tail.file,
          "name = \"...\" in [application], and pack again");
    }
    checkName("the application's name", app, tail.records.appVersion, isUsableInFolderName);
    checkName("the runtime's name", jreName(), tail.records.jreVersion, isUsableAsJre);
    if (isSameOnDisk(jreName(), app) || isSameOnDisk(jreName(), kUpdaterName) ||
        isSameOnDisk(app, kUpdaterName)) {
      add(Severity::kError, "name-taken",
          "application \"" + app + "\", runtime \"" + jreName() + "\" and updater \"" +
              kUpdaterName + "\" need different names: their folders would be taken for each other",
          bundle_.folder, "");
    }
    if (jreName().empty()) {
      add(Severity::kNote, "jre-name", "the runtime has an empty name (no parameter jre_name)",
          bundle_.folder, "");
    }
  }

  void checkVersion(const TailView& tail, const TailRecord& record) {
    const std::string& version = tail.records.*record.text;
    if (version.find_first_not_of("0123456789") != std::string::npos) {
      add(Severity::kError, "version",
          std::string(record.name) + " is \"" + version +
              "\", no whole number: only the number that it "
              "begins with counts",
          tail.file, "give each release a larger whole number");
    }
  }

  void checkVersions(const TailView& tail) {
    for (const TailRecord& record : kTailRecords) {
      if (record.text == &TailRecords::appVersion || record.text == &TailRecords::guVersion ||
          record.text == &TailRecords::jreVersion) {
        checkVersion(tail, record);
      }
    }
    if (!tail.carriesUpdater()) {
      add(Severity::kError, "no-updater",
          "the tail carries no updater: a first start ends with status 1, \"Unable to run (we are "
          "just a launcher)\"",
          tail.file, "");
    }
  }

  void checkUpdates(const TailView& tail) {
    const std::string* dynamic = bundle_.params ? bundle_.params->find("update_url") : nullptr;
    const UpdateUrl update(tail.records.updateUrl,
                           dynamic == nullptr ? std::nullopt : std::optional(*dynamic));
    const std::string& url = update.inForce();
    if (update.isDynamic() && url.empty()) {
      add(Severity::kWarning, "update-url",
          "the update URL is dynamic, and there is no parameter update_url", bundle_.folder,
          "quillory-pack set \"" + bundle_.folder + "\" update_url=https://...");
    } else if (url.starts_with("http://") && !isInvalidUpdateURL(url.c_str())) {
      add(Severity::kWarning, "plain-http",
          "the update URL is plain http: anybody on the way can hold back updates", tail.file,
          "use https://");
    }
    if (!tail.carriesRuntime() && (url.empty() || isInvalidUpdateURL(url.c_str()))) {
      add(Severity::kError, "no-runtime",
          "the tail carries no runtime and there is no URL to download one from: it starts only "
          "where a system runtime fits",
          tail.file, "add [runtime] to the configuration");
    }
  }

  void checkElevation(const TailView& tail) {
    if (tail.records.installType == "perm_all" &&
        !fs::is_regular_file(bundle_.inside("Resources/elev_mac"))) {
      add(Severity::kError, "no-elevation",
          "it installs for all users, and elev_mac is missing: people without the right to write "
          "there cannot install it",
          bundle_.inside("Resources/elev_mac"), "bundle.elev-mac names the tool");
    }
  }

  void checkTool(const TailView& tail) {
    if (tail.entries.empty() || tail.entries[0].path != kLzmaToolName ||
        tail.entries[0].length <= 0) {
      add(Severity::kError, "no-lzma64",
          "the first entry of the tail is not the tool lzma64: nothing can be unpacked", tail.file,
          "make the bundle again");
      return;
    }
    Findings ignored;
    RecordInput input(tail.file, ignored);
    input.seek(tail.entries[0].contentAt);
    const ProgramImage image =
        programImageOf(input.bytes(kImageHead), static_cast<std::uint64_t>(tail.entries[0].length));
    checkSamePlatform(kLzmaToolName, image, launcher_, tail.file, findings_);
  }

  void checkArchives(const TailView& tail) {
    const std::optional<PublicKey> key = tail.key();
    if (!key) {
      add(Severity::kWarning, "unsigned",
          "the tail has no key: the launcher accepts whatever anybody puts in the archives' place",
          tail.file, "sign it: quillory-pack keygen");
    } else if (key->modulusBytes() < 130) {
      add(Severity::kError, "key-size", "the key is too short: no signature can hold", tail.file,
          "make a key with: quillory-pack keygen");
    }
    const PublicKey* given = key ? &*key : nullptr;
    checkArchive(tail, tail.updaterArchive(), "updater", given, checkProgramArchive);
    checkArchive(tail, tail.applicationArchive(), "application", given, checkProgramArchive);
    checkArchive(tail, tail.runtimeArchive(), "runtime", given,
                 [this](const PlainArchive& archive, const ArchiveListing& listing,
                        const std::string& name, Findings& findings) {
                   checkRuntimeArchive(archive, listing, name, launcher_, findings);
                 });
    requireArchives(tail, findings_);
  }

  template <typename Examine>
  void checkArchive(const TailView& tail, const ListedEntry* entry, const char* part,
                    const PublicKey* key, Examine examine) {
    if (entry == nullptr) {
      return;
    }
    const std::string name = tail.file + ": " + entry->path;
    try {
      const PlainArchive archive(tail.regionOf(*entry), isCompressed(*entry));
      const Verdict verdict = verifyArchiveFile(archive, name, key, findings_);
      checkIdentity(tail, *entry, verdict, expectedArchivesOf(bundle_), name, findings_);
      if (verdict.trust == Trust::kBroken || verdict.trust == Trust::kUnchecked ||
          (key != nullptr && verdict.trust == Trust::kUnsigned)) {
        add(Severity::kError, "signature",
            std::string("the archive of the ") + part + " is not good: " + verdict.client, name,
            "make the bundle again");
      }
      Findings ignored;
      const ArchiveListing listing = archive.list(ignored, name);
      examine(archive, listing, name, findings_);
    } catch (const DamagedArchive& e) {
      findings_.push_back(e.finding());
    }
  }

  BundleView bundle_;
  ProgramImage launcher_;
  Findings findings_;
};

struct DoctorArguments : TrustArguments {
  std::string place;
};

int runServerDoctor(const DoctorArguments& given, Reporter& reporter) {
  const Findings findings = checkServer(given.place, trustedBy(given, reporter));
  reporter.findings(findings);
  const bool well = !hasErrors(findings);
  reporter.value("well", well);
  reporter.result(!well              ? "Clients would get no update from it, for the reasons above."
                  : findings.empty() ? "It has what clients need."
                                     : "It works, and could do better.");
  return well ? kDone : kFailed;
}

int runDoctor(const std::string& bundle, Reporter& reporter) {
  const Diagnosis diagnosis = diagnose(bundle);
  reporter.value("target", targetNameOf(diagnosis.launcher));
  reporter.line("a bundle for " + asText(diagnosis.launcher));
  reporter.findings(diagnosis.findings);
  const bool well = !hasErrors(diagnosis.findings);
  reporter.value("well", well);
  reporter.result(well ? "Nothing that would keep it from starting was found."
                       : "It would not work, for the reasons above.");
  return well ? kDone : kFailed;
}

}  // namespace

Diagnosis diagnose(const std::string& bundle) { return Doctor().run(bundle); }

Command doctorCommand() {
  const auto given = std::make_shared<DoctorArguments>();
  std::vector<Argument> arguments = {
      {.name = "PLACE",
       .description = "the bundle to look at, or the URL of a server with release files",
       .into = &given->place,
       .isRequired = true}};
  for (Argument& argument : trustArguments(*given)) {
    argument.description += "; for a server";
    arguments.push_back(std::move(argument));
  }
  return {"doctor", "tells what would go wrong on the user's machine, and why",
          "quillory-pack doctor \"dist/My App.app\"", std::move(arguments),
          [given](Reporter& reporter) {
            return isWebAddress(given->place) ? runServerDoctor(*given, reporter)
                                              : runDoctor(given->place, reporter);
          }};
}

}  // namespace quillory::pack
