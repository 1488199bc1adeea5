#include "packager/reading/bundle_view.h"

#include <filesystem>
#include <utility>
#include <vector>

#include "formats/params_format.h"
#include "formats/tail_format.h"
#include "packager/bytes/byte_sinks.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

std::string resource(const std::string& name) { return "Resources/" + name; }

const std::string kParamsPath = resource(kParamsFileName);
const std::string kOtherParamsPath =
    resource(std::string(kLocalizedParamsFolder) + '/' + kLocalizedParamsFileName);
const std::string kTailPath = resource(kTailFileName);

void missing(Findings& findings, const std::string& what, const std::string& file,
             const std::string& advice) {
  findings.push_back({Severity::kError, "missing-file", what, {file, 0}, advice});
}

// The one that Info.plist names, else the only file in MacOS.
std::string findExecutable(const BundleView& bundle) {
  const std::string named = plistText(bundle.infoPlist, "CFBundleExecutable");
  if (!named.empty()) {
    return bundle.inside("MacOS/" + named);
  }
  const std::vector<std::string> files = namesIn(bundle.inside("MacOS"));
  return files.size() == 1 ? bundle.inside("MacOS/" + files[0]) : "";
}

void readParamsOf(BundleView& bundle, Findings& findings) {
  for (const std::string& path : {kParamsPath, kOtherParamsPath}) {
    if (!isFile(bundle.inside(path))) {
      continue;
    }
    bundle.params = readParams(bundle.inside(path), findings);
    if (!bundle.params) {
      findings.push_back(
          {Severity::kError,
           "no-marker",
           "the launcher finds no marker in the parameters file and ends with status 1",
           {bundle.inside(path), 0},
           "make the bundle again"});
    }
    return;
  }
  missing(findings, "there is no parameters file: the launcher ends with status 1",
          bundle.inside(kParamsPath), "make the bundle again");
}

void readTailOf(BundleView& bundle, Findings& findings) {
  if (isFile(bundle.executable)) {
    bundle.tail = readTail(bundle.executable, true, findings);
  }
  if (bundle.tail) {
    return;
  }
  if (!isFile(bundle.inside(kTailPath))) {
    missing(findings, "there is no tail, neither in the executable nor as a file",
            bundle.inside(kTailPath), "make the bundle again");
    return;
  }
  bundle.tail = readTail(bundle.inside(kTailPath), false, findings);
}

}  // namespace

bool isBundle(const std::string& path) {
  std::error_code unknown;
  return fs::is_directory(path + "/Contents", unknown);
}

bool isFinishedBundle(const std::string& path) {
  Findings ignored;
  try {
    const BundleView bundle = readBundle(path, ignored);
    return bundle.params && bundle.tail;
  } catch (const PackError&) {
    return false;
  }
}

std::string plistText(const std::string& plist, const std::string& key) {
  const std::size_t at = plist.find("<key>" + key + "</key>");
  const std::size_t start = at == std::string::npos ? at : plist.find("<string>", at);
  const std::size_t end = start == std::string::npos ? start : plist.find("</string>", start);
  if (end == std::string::npos) {
    return "";
  }
  std::string text = plist.substr(start + 8, end - start - 8);
  const std::pair<const char*, const char*> kEscapes[] = {
      {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
  for (const auto& [escape, character] : kEscapes) {
    for (std::size_t found = 0; (found = text.find(escape, found)) != std::string::npos; ++found) {
      text.replace(found, std::string(escape).size(), character);
    }
  }
  return text;
}

BundleView readBundle(const std::string& path, Findings& findings) {
  BundleView bundle;
  bundle.folder = path;
  while (bundle.folder.size() > 1 && bundle.folder.back() == '/') {
    bundle.folder.pop_back();
  }
  const std::string plist = bundle.inside("Info.plist");
  if (isFile(plist)) {
    bundle.infoPlist = readWholeFile(plist);
  } else {
    missing(findings, "there is no Info.plist: macOS does not take the folder for an application",
            plist, "make the bundle again");
  }
  bundle.executable = findExecutable(bundle);
  if (!isFile(bundle.executable)) {
    missing(findings, "there is no executable",
            bundle.executable.empty() ? bundle.inside("MacOS") : bundle.executable,
            "make the bundle again");
  }
  readParamsOf(bundle, findings);
  readTailOf(bundle, findings);
  return bundle;
}

}  // namespace quillory::pack
