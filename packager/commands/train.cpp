#include "packager/commands/train.h"

#include <filesystem>
#include <memory>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "packager/commands/bundle_lint.h"
#include "packager/commands/bundle_parts.h"
#include "packager/commands/extract.h"
#include "packager/commands/training_run.h"
#include "packager/content/class_list.h"
#include "packager/content/content_copy.h"
#include "packager/content/pack_cache.h"
#include "packager/content/program_folder.h"
#include "packager/content/runtime_image.h"
#include "packager/reading/bundle_view.h"
#include "packager/report/exit_statuses.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr char kHeading[] =
    "# Classes of Java that a run of the application has loaded, a line each. quillory-pack train\n"
    "# writes this file; the runtime of the next bundle has them in its archive of classes.\n";

// The runtime as it is packed, or the same modules of this system where it is for another one.
std::string homeForTraining(Config config, const std::vector<std::string>& jars,
                            const WorkFolder& work, const TrainOptions& options,
                            Reporter& reporter) {
  if (config.runtime.source == RuntimeSource::kNone) {
    throw RejectedInput({{Severity::kError, "no-runtime",
                          "the list is for the runtime that is packed, and there is none",
                          config.placeOf("runtime"), "jlink = true in [runtime]"}});
  }
  const BundleTools tools = findBundleTools(config, nativeTarget());
  PackCache cache(options.cache);
  const auto homeIn = [&](const std::string& folder) {
    fs::create_directories(work / folder);
    return runtimeHome(config, tools, jars, nativeTarget(), work / folder, cache, reporter);
  };
  const auto flawsOf = [&](const std::string& home) {
    return lintRuntime(home, nativeTarget(), tools.launcher, config.placeOf("runtime"));
  };
  std::string home = homeIn("packed");
  if (!config.runtime.jmods.empty() && hasErrors(flawsOf(home))) {
    config.runtime.jmods.clear();
    home = homeIn("own");
  }
  accepted(flawsOf(home));
  return home;
}

UnpackedApplication unpackedOf(const Config& config, const WorkFolder& work,
                               const TrainOptions& options, Reporter& reporter) {
  const std::vector<std::string> jars = findJars(config);
  reporter.findings(accepted(lintFiles(config, jars)));
  UnpackedApplication application{homeForTraining(config, jars, work, options, reporter),
                                  work / "application"};
  const BundlePart part = applicationPart(config, jars);
  accepted(part.content.check());
  copyContent(part.content, application.folder);
  return application;
}

void unpack(const TailView& tail, const ListedEntry* archive, const char* what,
            const std::string& folder) {
  if (archive == nullptr || archive->length == 0) {
    throw PackError(std::string("carries no ") + what, "train with its configuration instead",
                    {tail.file, 0});
  }
  extractPlain(PlainArchive(tail.regionOf(*archive), isCompressed(*archive)),
               tail.file + ": " + archive->path, folder, false);
}

UnpackedApplication unpackedOf(const std::string& bundle, const WorkFolder& work) {
  Findings findings;
  const BundleView view = readBundle(bundle, findings);
  accepted(std::move(findings));
  if (!view.tail) {
    throw PackError("has no tail", "make the bundle again", {bundle, 0});
  }
  unpack(*view.tail, view.tail->runtimeArchive(), "runtime", work / "runtime");
  unpack(*view.tail, view.tail->applicationArchive(), "application", work / "application");
  return {findJavaHome(work / "runtime", {bundle, 0}), work / "application"};
}

std::string beside(const std::string& file) {
  return (fs::path(file).parent_path() / kKeptClassList).string();
}

void tellWhatIsKept(const std::vector<std::string>& names, const std::string& javaHome,
                    const std::string& kept, bool isBundle, Reporter& reporter) {
  const std::string own = javaHome + '/' + kRuntimeClassList;
  const std::size_t more = missingIn(isFile(own) ? readWholeFile(own) : "", names).size();
  reporter.value("classes", static_cast<std::uint64_t>(names.size()));
  reporter.value("more", static_cast<std::uint64_t>(more));
  reporter.value("list", kept);
  reporter.result(kept);
  reporter.line("kept " + std::to_string(names.size()) + " classes of Java, " +
                std::to_string(more) + " of them not in the runtime's own list");
  reporter.line(isBundle ? "Put it beside the configuration, commit it with it, then: "
                           "quillory-pack bundle"
                         : "Commit it with the configuration, then: quillory-pack bundle");
}

}  // namespace

std::string train(const TrainOptions& options, Reporter& reporter) {
  const WorkFolder work(temporaryFolder());
  const bool isOfBundle = isBundle(options.what);
  UnpackedApplication application;
  if (isOfBundle) {
    application = unpackedOf(options.what, work);
  } else {
    Findings findings;
    const Config config = loadConfig(options.what, findings);
    reporter.findings(findings);
    application = unpackedOf(config, work, options, reporter);
  }
  reporter.line(
      "running the application once, to see which classes of Java it needs. Use it for a moment "
      "as its users do, then end it: close its window, or choose Quit");
  const std::vector<std::string> names =
      trainingRun(application, options.arguments, work.path(), reporter);
  std::string text = kHeading;
  for (const std::string& name : names) {
    text += name + '\n';
  }
  const std::string kept = !options.output.empty() ? options.output
                           : isOfBundle            ? kKeptClassList
                                                   : beside(options.what);
  writeWholeFile(kept, text);
  tellWhatIsKept(names, application.javaHome, kept, isOfBundle, reporter);
  return kept;
}

Command trainCommand() {
  const auto given = std::make_shared<TrainOptions>();
  const auto withoutCache = std::make_shared<bool>(false);
  return {"train",
          "runs the application once, for a list that makes its starts faster",
          "quillory-pack train -- letter.txt",
          {{.name = "CONFIG|BUNDLE",
            .description = "the configuration, or a finished bundle",
            .into = &given->what},
           {.name = "-o,--output",
            .description = "the list, instead of quillory.classlist beside the configuration",
            .into = &given->output},
           {.name = "--no-cache",
            .description = "link the runtime anew, and do not keep it",
            .into = withoutCache.get()}},
          [given, withoutCache](Reporter& reporter) {
            given->cache = *withoutCache ? "" : standardCacheFolder();
            train(*given, reporter);
            return kDone;
          },
          {.name = "ARGUMENT",
           .description = "what the application is started with",
           .into = &given->arguments}};
}

}  // namespace quillory::pack
