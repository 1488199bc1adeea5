// Whether the archives of a bundle say what they are, and what they should be: what a hardened
// launcher asks, so that no genuine archive is put in the place of another one.
#pragma once
#include <optional>
#include <string>

#include "formats/archive_identity.h"
#include "packager/commands/verify.h"
#include "packager/reading/bundle_view.h"
#include "packager/reading/tail_view.h"
#include "packager/report/findings.h"

namespace quillory::pack {

/// What is expected of the archives in a tail, and nothing by default.
struct ExpectedArchives {
  std::string jreName;   ///< the parameter jre_name; none: the runtime may have any name
  std::string platform;  ///< the name of a target; "" for one that is not known
  bool isHardened = false;
};

ExpectedArchives expectedArchivesOf(const BundleView& bundle);

/// Reports an archive of another component, version or platform than its place in the tail is for,
/// and where the bundle is hardened one that is not signed or does not say what it is.
void checkIdentity(const TailView& tail, const ListedEntry& entry, const Verdict& verdict,
                   const ExpectedArchives& expected, const std::string& name, Findings& findings);

/// The same of a release archive, which its file name tells from others.
void checkReleaseIdentity(const std::string& path, const std::optional<ArchiveIdentity>& said,
                          Findings& findings);

}  // namespace quillory::pack
