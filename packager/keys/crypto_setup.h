// The crypto library, ready for RSA and the "mixed" digest.
#pragma once

namespace quillory::pack {

/// The library's name for the random numbers of system_random.h. Its own generator of that kind
/// goes on with clock readings where there is no /dev/urandom, and says nothing.
inline constexpr char kSystemRandom[] = "quillory-system";

/// Registers what signing and verifying look up by name. For the main thread, before others start;
/// any number of times. Throws PackError when the library refuses.
void setUpCrypto();

}  // namespace quillory::pack
