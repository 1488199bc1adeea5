// PEM files: base64 between "-----BEGIN kind-----" and "-----END kind-----".
#pragma once
#include <string>

namespace quillory::pack {

inline constexpr char kMakeKeyAdvice[] = "make a key with: quillory-pack keygen";

struct PemBlock {
  std::string kind;  ///< "RSA PRIVATE KEY"
  std::string der;   ///< what stands between the lines, decoded
};

/// The first block of a file. Throws PackError, naming the file and the way out, when it cannot be
/// read, has no whole block or a damaged one, and for encrypted keys.
PemBlock readPem(const std::string& path);

/// The text of a file with this block alone, in lines of 64 characters.
std::string pemText(const PemBlock& block);

}  // namespace quillory::pack
