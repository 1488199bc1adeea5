#include "packager/keys/crypto_setup.h"

#include "formats/archive_signature.h"
#include "packager/report/findings.h"

namespace quillory::pack {

void setUpCrypto() {
  static const bool done = [] {
    Hash_state unused;
    ltc_mp = ltm_desc;
    return initHash(&unused) && register_prng(&sprng_desc) >= 0 &&
           register_prng(&chacha20_prng_desc) >= 0;
  }();
  if (!done) {
    throw PackError("the crypto library cannot be set up");
  }
}

}  // namespace quillory::pack
