#include "packager/reading/target.h"

#include <algorithm>

namespace quillory::pack {
namespace {

constexpr char kNeededOnMacOS[] = "x86_64";

}  // namespace

const std::vector<std::string>& targetNames() {
  static const std::vector<std::string> names = {"linux", "macos"};
  return names;
}

const std::string& nameOf(Target target) { return targetNames()[static_cast<std::size_t>(target)]; }

std::optional<Target> targetNamed(const std::string& name) {
  const auto& names = targetNames();
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) {
    return std::nullopt;
  }
  return static_cast<Target>(found - names.begin());
}

const char* systemOf(Target target) { return target == Target::kMacOS ? "macOS" : "Linux"; }

std::string targetNameOf(const ProgramImage& image) {
  for (const Target target : {Target::kLinux, Target::kMacOS}) {
    if (image.system == systemOf(target)) {
      return nameOf(target);
    }
  }
  return "";
}

std::optional<Finding> unfitFor(Target target, const Subject& program, const ProgramImage& image) {
  const auto flaw = [&](const std::string& what) {
    return Finding{Severity::kError, "platform", program.name + ' ' + what, program.place, ""};
  };
  if (image.system.empty()) {
    return flaw("is no program");
  }
  if (image.system != systemOf(target)) {
    return flaw("is for " + asText(image) + ", and the bundle is for " + systemOf(target));
  }
  if (target == Target::kMacOS && !image.runsOn(kNeededOnMacOS)) {
    return flaw("is for " + asText(image) + ", and the bundle needs it for " + kNeededOnMacOS);
  }
  return std::nullopt;
}

Findings lintArchitectures(const ProgramImage& launcher, const ProgramImage& java,
                           const Place& place) {
  Findings findings;
  for (const std::string& architecture : launcher.architectures) {
    if (java.system == launcher.system && !java.runsOn(architecture)) {
      findings.push_back({Severity::kWarning, "architecture",
                          "the launcher runs on " + architecture +
                              " too, where it cannot load the runtime, which is for " +
                              asText(java) + ": Java has to run as a process of its own there",
                          place,
                          "a runtime for all of the launcher's processors, or with "
                          "bundle.launcher one for those of the runtime"});
    }
  }
  return findings;
}

}  // namespace quillory::pack
