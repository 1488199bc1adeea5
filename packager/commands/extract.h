// Extracts an archive with the launcher's own code.
#pragma once
#include <functional>
#include <string>

#include "packager/commands/command.h"
#include "packager/reading/plain_archive.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// Extracts a ".p2" or ".p2.l2" file into `folder`, which is made when missing and must be empty.
/// The archive stays. With a key a signature must be there and hold, else everything extracted is
/// gone again and PackError is thrown; without one a signature is not checked. `showLog`: the
/// launcher's log goes to standard error. Throws PackError where it cannot go on, on a full disk
/// say; what was extracted before stays.
void extractTo(const std::string& archive, const std::string& folder, const std::string& keyFile,
               bool showLog);

/// The same with an archive that is at hand, whatever its signature; people know it as `archive`.
/// `check` is asked before anything is made, may add to the findings and throw.
void extractPlain(const PlainArchive& plain, const std::string& archive, const std::string& folder,
                  bool showLog, const std::function<void(Findings&)>& check = {});

/// "extract": the same, with the log when details were asked for.
Command extractCommand();

}  // namespace quillory::pack
