// A signing key for tests that need some key: making one takes longer than most of them.
#pragma once
#include <string>

namespace quillory::testing {

/// The path of an RSA key of 2048 bits in PEM, which the build has made with openssl. Whoever
/// changes anything about it takes a copy.
std::string builtKey();

}  // namespace quillory::testing
