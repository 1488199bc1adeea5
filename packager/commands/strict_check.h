// What no signature of ours covers in a bundle, compared with what this program would put there.
#pragma once
#include "packager/reading/bundle_view.h"
#include "packager/report/findings.h"

namespace quillory::pack {

/// Reports where a bundle differs from one that this installation makes: in the bytes of launcher,
/// lzma64 and elev_mac, in Info.plist, and by files that no bundle has. The parameters, which may
/// be changed afterwards, and the tail's records and pictures are not compared.
void checkStrictly(const BundleView& bundle, Findings& findings);

}  // namespace quillory::pack
