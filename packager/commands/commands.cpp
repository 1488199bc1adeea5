#include "packager/commands/commands.h"

#include <utility>

#include "packager/bytes/work_folder.h"
#include "packager/commands/bundle.h"
#include "packager/commands/doctor.h"
#include "packager/commands/extract.h"
#include "packager/commands/init.h"
#include "packager/commands/inspect.h"
#include "packager/commands/keygen.h"
#include "packager/commands/set_params.h"
#include "packager/commands/verify.h"
#include "packager/config/config.h"
#include "packager/report/exit_statuses.h"
#include "packager/report/value_lines.h"

namespace quillory::pack {
namespace {

const char* asText(Trust trust) {
  switch (trust) {
    case Trust::kVerified:
      return "signed";
    case Trust::kUnsigned:
      return "unsigned";
    case Trust::kUnchecked:
      return "signed, not checked";
    case Trust::kBroken:
      break;
  }
  return "BROKEN";
}

// What cannot be looked at is a finding among others: the paths behind it are looked at too.
VerifyResult verifyOrReport(const std::string& path, const std::string& keyFile) {
  try {
    return verifyPath(path, keyFile);
  } catch (const PackError& e) {
    stopIfInterrupted();
    VerifyResult result;
    result.findings.push_back(e.finding());
    return result;
  }
}

}  // namespace

int runInit(const Request& request, Reporter& reporter) {
  writeInitialConfig(request.file, reporter);
  return kDone;
}

int runKeygen(const Request& request, Reporter& reporter) {
  makeKeyFile(request.file, request.bits, reporter);
  return kDone;
}

int runBundle(const Request& request, Reporter& reporter) {
  Findings findings;
  Config config = loadConfig(request.file, findings);
  reporter.findings(findings);
  BundleOptions options;
  if (!request.output.empty()) {
    options.output = request.output;
  }
  if (request.compression >= 0) {
    options.compression = request.compression;
  }
  options.unsignedArchives = request.unsignedArchives;
  options.target = targetNamed(request.target).value_or(nativeTarget());
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

int runInspect(const Request& request, Reporter& reporter) {
  Findings findings;
  const Json content = inspectFile(request.file, fileKindNamed(request.kind), findings);
  reporter.value("content", content);
  const std::string lines = asLines(content);
  reporter.result(lines.substr(0, lines.find_last_not_of('\n') + 1));
  reporter.findings(findings);
  return hasErrors(findings) ? kFailed : kDone;
}

int runVerify(const Request& request, Reporter& reporter) {
  if (!request.key.empty()) {
    PublicKey::load(request.key);  // or nothing can be checked
  }
  bool good = true;
  bool allChecked = true;
  Json verdicts = Json::array();
  for (const std::string& path : request.texts) {
    const VerifyResult result = verifyOrReport(path, request.key);
    for (const Verdict& verdict : result.verdicts) {
      const std::string name = verdict.archive == path ? path : path + ": " + verdict.archive;
      verdicts.push_back(
          {{"archive", name}, {"result", asText(verdict.trust)}, {"client", verdict.client}});
      allChecked = verdict.trust != Trust::kUnchecked && allChecked;
      reporter.result(std::string(asText(verdict.trust)) + ": " + name + ": " + verdict.client);
    }
    reporter.findings(result.findings);
    good = result.good(!request.key.empty()) && good;
  }
  reporter.value("verdicts", verdicts);
  reporter.value("structure", good ? "good" : "NOT good");
  reporter.value("signature", allChecked && !verdicts.empty() ? "checked" : "not checked");
  // Neither good nor bad: nobody has looked.
  reporter.value("good", good && !allChecked ? Json() : Json(good));
  reporter.line(!good        ? "NOT good"
                : allChecked ? "good"
                             : "structure good; signatures not checked: --key checks them");
  return good ? kDone : kFailed;
}

int runExtract(const Request& request, Reporter& reporter) {
  const bool showLog = request.reporter.verbosity == Verbosity::kVerbose && !request.reporter.json;
  extractTo(request.file, request.output, request.key, showLog, [&](const PackError& error) {
    reporter.finding(error.finding());
    reporter.finish("extract", kFailed);
  });
  reporter.value("folder", request.output);
  reporter.result(request.output);
  return kDone;
}

int runSet(const Request& request, Reporter& reporter) {
  const ParamsView params = setParameters(request.file, request.texts, request.removed);
  Json list = Json::array();
  for (const auto& [name, value] : params.parameters) {
    list.push_back({{"name", name}, {"value", value}});
  }
  reporter.value("parameters", list);
  reporter.result(params.file);
  return kDone;
}

int runDoctor(const Request& request, Reporter& reporter) {
  const Diagnosis diagnosis = diagnose(request.file);
  reporter.value("target", targetNameOf(diagnosis.launcher));
  reporter.line("a bundle for " + asText(diagnosis.launcher));
  reporter.findings(diagnosis.findings);
  const bool well = !hasErrors(diagnosis.findings);
  reporter.value("well", well);
  reporter.result(well ? "Nothing that would keep it from starting was found."
                       : "It would not work, for the reasons above.");
  return well ? kDone : kFailed;
}

int runCompletion(const Request& request, Reporter& reporter) {
  reporter.result(request.texts.at(0));
  return kDone;
}

}  // namespace quillory::pack
