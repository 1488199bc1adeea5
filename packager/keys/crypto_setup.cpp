#include "packager/keys/crypto_setup.h"

#include "formats/archive_signature.h"
#include "packager/keys/system_random.h"
#include "packager/report/findings.h"

namespace quillory::pack {

namespace {

// A generator without a state of its own. Fewer bytes than were asked for are an error for the
// library wherever it reads from one.
unsigned long readSystemRandom(unsigned char* out, unsigned long count, prng_state*) {
  return fillWithSystemRandom(out, count) ? count : 0;
}

const ltc_prng_descriptor& systemRandom() {
  static const ltc_prng_descriptor descriptor = [] {
    ltc_prng_descriptor made = sprng_desc;
    made.name = kSystemRandom;
    made.read = readSystemRandom;
    return made;
  }();
  return descriptor;
}

}  // namespace

void setUpCrypto() {
  static const bool done = [] {
    Hash_state unused;
    ltc_mp = ltm_desc;
    return initHash(&unused) && register_prng(&systemRandom()) >= 0 &&
           register_prng(&chacha20_prng_desc) >= 0;
  }();
  if (!done) {
    throw PackError("the crypto library cannot be set up");
  }
}

}  // namespace quillory::pack
