#include "packager/commands/bundle.h"

#include <array>
#include <filesystem>
#include <memory>
#include <utility>

#include "formats/markers.h"
#include "formats/tail_format.h"
#include "formats/update_url.h"
#include "install/version_folders.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "packager/commands/bundle_parts.h"
#include "packager/commands/named_key.h"
#include "packager/commands/output_place.h"
#include "packager/commands/packing.h"
#include "packager/commands/release_files.h"
#include "packager/content/icns.h"
#include "packager/content/info_plist.h"
#include "packager/content/runtime_image.h"
#include "packager/report/exit_statuses.h"
#include "packager/writing/archive_writer.h"
#include "packager/writing/params_writer.h"
#include "packager/writing/tail_writer.h"

namespace quillory::pack {
namespace {

struct BundleArguments {
  std::string config = "quillory.toml";
  std::string output;  ///< "": where the configuration says
  std::optional<int> compression;
  std::string target;  ///< "": this system
  bool isUnsigned = false;
};

namespace fs = std::filesystem;

constexpr unsigned kExecutable = 0777;  // less the umask

class BundleMaker {
 public:
  BundleMaker(Config config, const BundleOptions& options, Reporter& reporter)
      : config_(std::move(config)),
        options_(options),
        reporter_(reporter),
        output_(options.output ? *options.output : config_.resolve(config_.bundle.output)),
        work_(output_) {}

  BundleResult run() {
    loadKey();
    tools_ = findBundleTools(config_, options_.target);
    jars_ = findJars(config_);
    gatherContent();
    pack();
    assemble();
    return deliver();
  }

 private:
  void loadKey() {
    if (options_.unsignedArchives) {
      reporter_.finding({Severity::kWarning,
                         "unsigned",
                         "the archives are not signed: the launcher accepts whatever anybody puts "
                         "in their place",
                         {config_.file, 0},
                         "make a key with: quillory-pack keygen"});
      return;
    }
    if (config_.signing.key.empty()) {
      throw RejectedInput({{Severity::kError, "unsigned",
                            "signing.key is missing, and unsigned archives have to be asked for",
                            config_.placeOf("signing"),
                            "quillory-pack keygen makes a key; --unsigned packs without one"}});
    }
    const std::string path = config_.resolve(config_.signing.key);
    key_ = namedKey(config_);
    const Place place = config_.placeOf("signing.key");
    if (key_->modulusBytes() < kSmallestModulus || key_->modulusBytes() > kLargestModulus) {
      throw RejectedInput({{Severity::kError, "key-size",
                            "the key has " + std::to_string(key_->modulusBytes()) +
                                " bytes; signatures hold with 130 to 2047",
                            place, "make a key with: quillory-pack keygen"}});
    }
    if (isReadableByOthers(path)) {
      reporter_.finding({Severity::kWarning, "key-mode",
                         path + " can be read by other people of this machine", place,
                         "chmod 600 " + path});
    }
  }

  void gatherContent() {
    reporter_.findings(checked(lintFiles(config_, jars_)));
    if (config_.runtime.source != RuntimeSource::kNone) {
      runtime_ = gatherRuntime();
    }
    updater_ = updaterContent(config_, tools_);
    application_ = applicationContent(config_, jars_);
    Findings findings = lintApplicationPaths(*application_);
    for (const auto* tree : {&updater_, &application_, &runtime_}) {
      if (*tree) {
        const Findings own = (*tree)->check();
        findings.insert(findings.end(), own.begin(), own.end());
        lintStrays(**tree, findings);
      }
    }
    reporter_.findings(checked(findings));
  }

  // What lies in a folder that is packed as a whole, and must not travel with it.
  void lintStrays(const ContentTree& tree, Findings& findings) const {
    const std::string key =
        config_.signing.key.empty() ? "" : tree.sourceOf(config_.resolve(config_.signing.key));
    if (!key.empty()) {
      findings.push_back({Severity::kError,
                          "key-packed",
                          "the key that signs would be in the " + tree.name() +
                              ", where everybody can take it and sign with it",
                          {key, 0},
                          "keep it outside of the folders that are packed"});
    }
    const std::string output = tree.sourceOf(output_);
    if (!output.empty()) {
      findings.push_back({Severity::kError,
                          "output-packed",
                          "the folder for the results would be in the " + tree.name() +
                              ", with the unfinished work and all that earlier runs made",
                          {output, 0},
                          "name another folder with bundle.output, or pack less"});
    }
  }

  static Findings checked(Findings findings) {
    if (hasErrors(findings)) {
      throw RejectedInput(std::move(findings));
    }
    return findings;
  }

  ContentTree gatherRuntime() {
    std::string folder = config_.resolve(config_.runtime.folder);
    if (config_.runtime.source == RuntimeSource::kJlink) {
      requireModulesFor(options_.target, config_);
      reporter_.line("linking a runtime");
      std::vector<std::string> jars = jars_;
      jars.push_back(tools_.updaterJar);
      folder = linkRuntime(config_.runtime, jars, work_.path());
    }
    const std::string home = findJavaHome(folder, config_.placeOf("runtime.folder"));
    reporter_.findings(
        checked(lintRuntime(home, options_.target, tools_.launcher, config_.placeOf("runtime"))));
    if (config_.runtime.version.empty()) {
      config_.runtime.version = versionNumberOf(home);
    }
    if (config_.runtime.version.empty()) {
      throw RejectedInput(
          {{Severity::kError, "version", "the runtime has no release file that says its version",
            config_.placeOf("runtime"), "version = 17 in [runtime]"}});
    }
    reporter_.detail("runtime " + home + ", version " + config_.runtime.version);
    return runtimeContent(home, config_.runtime);
  }

  void pack() {
    std::vector<PackingJob> jobs;
    if (runtime_) {
      jobs.push_back({&*runtime_, work_ / "JRE.p2.l2"});
    }
    jobs.push_back({&*updater_, work_ / "GU.p2.l2"});
    jobs.push_back({&*application_, work_ / "App.p2.l2"});
    std::uint64_t total = 0;
    for (const PackingJob& job : jobs) {
      total += job.content->totalBytes();
    }
    reporter_.line("packing " + readableSize(total));
    PackingOptions packing;
    packing.level = options_.compression ? *options_.compression : config_.bundle.compression;
    packing.key = key_ ? &*key_ : nullptr;
    packing.salt = config_.signing.salt;
    packAll(jobs, packing, reporter_);
  }

  std::string packed(const std::string& name) const { return work_ / name; }
  std::string contents(const std::string& inside) const {
    return work_ / ("app/Contents/" + inside);
  }

  void writeTail(ByteSink& sink) {
    TailRecords records;
    records.appName = config_.application.name;
    records.appVersion = std::to_string(config_.application.version);
    records.jreVersion = runtime_ ? config_.runtime.version : "";
    records.guVersion = std::to_string(config_.updater.version);
    records.minSplashMs = std::to_string(config_.application.minSplashMillis);
    records.signaturePublicKey = key_ ? key_->publicHex() : "";
    records.canOverrideSplash = config_.application.splashOverride ? "1" : "0";
    records.installType = config_.install.type;
    records.silentParameter = config_.install.silentSwitch;
    records.requiredJavaVersion =
        config_.install.requiredJava == 0 ? "" : std::to_string(config_.install.requiredJava);
    records.updateUrl =
        config_.update.mode == UpdateMode::kDynamic ? kDynamicUpdateUrl : config_.update.url;
    writeTailRecords(sink, records);
    const std::string& splash = config_.application.splash;
    const std::string& cacerts = config_.updater.cacerts;
    writeTailEntry(sink, {kLzmaToolName, tools_.lzma64});
    writeTailEntry(sink, {kSplashPictureName, splash.empty() ? "" : config_.resolve(splash)});
    writeTailEntry(sink, {kTrustStoreName, cacerts.empty() ? "" : config_.resolve(cacerts)});
    writeTailEntry(sink, {"verpatch.exe", ""});
    writeTailEntry(sink, {"GU.p2.l2", packed("GU.p2.l2")});
    if (runtime_) {
      writeTailEntry(sink, {"JRE.p2.l2", packed("JRE.p2.l2")});
    }
    writeTailEntry(sink, {"App.p2.l2", packed("App.p2.l2")});
    // The launcher reads two entries for the application; the second one is a leftover that the
    // format keeps.
    writeTailEntry(sink, {"App2", ""});
  }

  Parameters parameters() const {
    Parameters all = {{"jre_name", config_.runtime.name}};
    if (config_.update.mode == UpdateMode::kDynamic && !config_.update.url.empty()) {
      all.emplace_back("update_url", config_.update.url);
    }
    if (config_.jvm.forceSpawn) {
      all.emplace_back("force_spawn", "true");
    }
    all.insert(all.end(), config_.parameters.begin(), config_.parameters.end());
    return all;
  }

  void writeExecutable() {
    FileSink executable(contents("MacOS/" + config_.application.executable), kExecutable);
    copyFileInto(executable, tools_.launcher);
    if (config_.bundle.tail == TailPlace::kExecutable) {
      executable.write(guardBeforeMarker(tools_.launcher));
      executable.write(tailMarker());
      writeTail(executable);
    }
    executable.commit();
  }

  std::string writeIcon() {
    const std::string& icon = config_.application.icon;
    if (icon.empty()) {
      return "";
    }
    const std::string name = config_.application.executable + ".icns";
    writeWholeFile(contents("Resources/" + name), icnsFrom(config_.resolve(icon)));
    return name;
  }

  void assemble() {
    fs::create_directories(contents("MacOS"));
    fs::create_directories(contents("Resources"));
    writeExecutable();
    if (config_.bundle.tail == TailPlace::kFile) {
      FileSink tail(contents(std::string("Resources/") + kTailFileName));
      writeTail(tail);
      tail.commit();
    }
    FileSink params(contents(std::string("Resources/") + kParamsFileName));
    writeParameters(params, parameters());
    params.commit();
    const std::string icon = writeIcon();
    writeWholeFile(contents("Info.plist"), applicationInfoPlist(config_.application, icon));
    if (!tools_.elevMac.empty()) {
      writeWholeFile(contents("Resources/elev_mac"), readWholeFile(tools_.elevMac), kExecutable);
    }
    writeReleaseFiles();
  }

  void writeReleaseFiles() {
    const std::string folder = work_ / "release";
    addRelease(folder, kUpdaterName, std::to_string(config_.updater.version), packed("GU.p2.l2"));
    addRelease(folder, config_.application.name, std::to_string(config_.application.version),
               packed("App.p2.l2"));
    if (runtime_) {
      addRelease(folder, config_.runtime.name, config_.runtime.version, packed("JRE.p2.l2"));
    }
  }

  BundleResult deliver() {
    BundleResult result;
    for (const auto& entry : fs::recursive_directory_iterator(work_ / "app")) {
      result.bundleBytes += entry.is_regular_file() ? entry.file_size() : 0;
    }
    result.bundle = output_ + '/' + config_.application.name + ".app";
    result.releaseFolder = output_ + "/release";
    putInPlace({work_ / "app", work_ / "release"},
               {result.bundle, result.releaseFolder, work_ / "earlier"});
    return result;
  }

  Config config_;
  const BundleOptions& options_;
  Reporter& reporter_;
  std::string output_;
  WorkFolder work_;
  BundleTools tools_;
  std::optional<SigningKey> key_;
  std::vector<std::string> jars_;
  std::optional<ContentTree> updater_;
  std::optional<ContentTree> application_;
  std::optional<ContentTree> runtime_;
};

int runBundle(const BundleArguments& given, Reporter& reporter) {
  Findings findings;
  Config config = loadConfig(given.config, findings);
  reporter.findings(findings);
  BundleOptions options;
  if (!given.output.empty()) {
    options.output = given.output;
  }
  options.compression = given.compression;
  options.unsignedArchives = given.isUnsigned;
  options.target = targetNamed(given.target).value_or(nativeTarget());
  const BundleResult result = makeBundle(std::move(config), options, reporter);
  reporter.value("target", nameOf(options.target));
  reporter.value("bundle", result.bundle);
  reporter.value("release", result.releaseFolder);
  reporter.value("bytes", result.bundleBytes);
  reporter.result(result.bundle);
  reporter.line(readableSize(result.bundleBytes) + ", for " + systemOf(options.target) +
                "; the files for the update URL are in " + result.releaseFolder);
  return kDone;
}

}  // namespace

BundleResult makeBundle(Config config, const BundleOptions& options, Reporter& reporter) {
  return BundleMaker(std::move(config), options, reporter).run();
}

Command bundleCommand() {
  const auto given = std::make_shared<BundleArguments>();
  return {"bundle",
          "makes dist/<App>.app, and dist/release/ for the update URL",
          "quillory-pack bundle --target macos --output /tmp/out myapp.toml",
          {{.name = "CONFIG", .description = "the configuration", .into = &given->config},
           {.name = "-o,--output",
            .description = "folder for the results, instead of dist",
            .into = &given->output},
           {.name = "--compression",
            .description = "0 (fast) to 9 (small)",
            .into = &given->compression,
            .numberRange = {{0, 9}}},
           {.name = "--target",
            .description = "the system that it is for, instead of this one",
            .into = &given->target,
            .choices = targetNames()},
           {.name = "--unsigned",
            .description = "pack without a key: whoever can change a download can run anything",
            .into = &given->isUnsigned}},
          [given](Reporter& reporter) { return runBundle(*given, reporter); }};
}

}  // namespace quillory::pack
