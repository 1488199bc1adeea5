// Owns a key of the crypto library. For source files only: the library's header defines many
// macros.
#pragma once
#include "formats/tomcrypt.h"

namespace quillory::pack {

struct RsaHolder {
  rsa_key key{};
  bool filled = false;  ///< only then there is something to free

  RsaHolder() = default;
  RsaHolder(const RsaHolder&) = delete;
  RsaHolder& operator=(const RsaHolder&) = delete;
  ~RsaHolder() {
    if (filled) {
      rsa_free(&key);
    }
  }
};

}  // namespace quillory::pack
