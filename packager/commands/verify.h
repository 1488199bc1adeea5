// Checks structure and signatures as a client would, and says what a client would do.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "packager/commands/command.h"
#include "packager/keys/public_key.h"
#include "packager/reading/plain_archive.h"
#include "packager/report/findings.h"

namespace quillory::pack {

enum class Trust {
  kVerified,   ///< the signature holds
  kUnsigned,   ///< there is none: every client accepts that
  kUnchecked,  ///< there is one, and no key to check it with
  kBroken,     ///< it does not hold, or the structure does not
};

struct Verdict {
  std::string archive;  ///< what was checked
  Trust trust = Trust::kBroken;
  std::string client;                                      ///< what a client does with it
  std::optional<ArchiveIdentity> identity = std::nullopt;  ///< what it says that it is
};

struct VerifyResult {
  std::vector<Verdict> verdicts;
  Findings findings;
  /// What of a bundle is covered by no signature of ours, for people.
  std::vector<std::string> uncovered{};

  /// Nothing is broken; and where a key says that archives are signed, all of them are.
  bool good(bool keyGiven) const;
};

/// The archive itself, with the key (may be none).
Verdict verifyArchiveFile(const PlainArchive& archive, const std::string& name,
                          const PublicKey* key, Findings& findings);

/// The same for an archive inside a file; one that cannot be decompressed is broken. Throws
/// PackError where that cannot be told, on a full disk say.
Verdict verifyRegion(const FileRegion& region, bool compressed, const std::string& name,
                     const PublicKey* key, Findings& findings);

/// A bundle, a tail or an archive. `keyFile` "": the bundle's own key. `isStrict`: of a bundle also
/// what no signature covers is looked at, see strict_check.h. Throws PackError for other files.
VerifyResult verifyPath(const std::string& path, const std::string& keyFile, bool isStrict = false);

/// "verify": prints the verdicts; fails unless all that it looks at is good.
Command verifyCommand();

}  // namespace quillory::pack
