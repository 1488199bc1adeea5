// The crypto library, ready for RSA and the "mixed" digest.
#pragma once

namespace quillory::pack {

/// Registers what signing and verifying look up by name. For the main thread, before others start;
/// any number of times. Throws PackError when the library refuses.
void setUpCrypto();

}  // namespace quillory::pack
