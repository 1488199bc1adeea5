// The systems that bundles are made for, and what of theirs fits together.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "packager/reading/program_image.h"
#include "packager/report/findings.h"

namespace quillory::pack {

enum class Target { kLinux, kMacOS };

/// The names of --target, in the order of the enumeration: "linux", "macos".
const std::vector<std::string>& targetNames();
const std::string& nameOf(Target target);
/// None for an unknown name.
std::optional<Target> targetNamed(const std::string& name);
/// The system in people's words: "Linux", "macOS".
const char* systemOf(Target target);

/// The name of the target that a program is for; "" for none of them.
std::string targetNameOf(const ProgramImage& image);

/// Why a program cannot be part of a bundle, without advice; none when it can. Programs for macOS
/// are made for x86_64, alone or among others.
std::optional<Finding> unfitFor(Target target, const Subject& program, const ProgramImage& image);

/// A warning where the launcher runs on processors that the runtime's Java is not for.
Findings lintArchitectures(const ProgramImage& launcher, const ProgramImage& java,
                           const Place& place);

}  // namespace quillory::pack
