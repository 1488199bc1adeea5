// An application bundle as it lies on a disk.
#pragma once
#include <optional>
#include <string>

#include "packager/reading/params_view.h"
#include "packager/reading/tail_view.h"
#include "packager/report/findings.h"

namespace quillory::pack {

struct BundleView {
  std::string folder;      ///< of the bundle, without a slash at the end
  std::string infoPlist;   ///< its text, or ""
  std::string executable;  ///< the path of the launcher
  std::optional<ParamsView> params;
  std::optional<TailView> tail;

  /// The path of something in the bundle; need not be there.
  std::string inside(const std::string& path) const { return folder + "/Contents/" + path; }
};

/// Whether it has the folder "Contents", which makes a bundle of a folder.
bool isBundle(const std::string& path);

/// Whether a bundle holds what each of ours holds when it is finished, and nobody else's does: a
/// parameters file with its marker, and a tail.
bool isFinishedBundle(const std::string& path);

/// Reads what the launcher reads, and in its order. What is missing is a finding.
BundleView readBundle(const std::string& path, Findings& findings);

/// A text of a property list in XML, or "".
std::string plistText(const std::string& plist, const std::string& key);

}  // namespace quillory::pack
