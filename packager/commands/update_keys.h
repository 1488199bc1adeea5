// The keys of a release: who signs what, and whom an installation trusts from then on.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "packager/config/config.h"
#include "packager/keys/signing_key.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct UpdateKeys {
  SigningKey working;              ///< signs release lists, for installations that trust it
  std::optional<SigningKey> next;  ///< signs them as well, while keys change
  /// What a list names as the keys that count from now on; empty: they stay. Public halves in
  /// hexadecimal, as all below.
  std::vector<std::string> nextKeys;
  std::vector<std::string> trusted;  ///< by installations that this release makes

  /// Signs archives: installations check them with the keys that a list has brought, and those
  /// that this release makes know no other.
  const SigningKey& forArchives() const { return next ? *next : working; }
  /// What a release list is signed with, in this order.
  std::vector<const SigningKey*> forLists() const;
  /// Under which of its keys a list of this folder may stand: all that are known here.
  std::vector<std::string> known() const;
};

/// The keys that [signing] and [update] name, around the one that archives have always been signed
/// with. Throws RejectedInput, at the line of its key, for a file that holds none, and where no
/// signature would be by one of the next keys. A reserve key whose private half lies here is
/// reported.
UpdateKeys loadUpdateKeys(const Config& config, SigningKey working, Reporter& reporter);

}  // namespace quillory::pack
