// The public half of a signing key: from a tail, or from a file.
#pragma once
#include <memory>
#include <string>

#include "packager/keys/mixed_digest.h"

namespace quillory::pack {

struct RsaHolder;

class PublicKey {
 public:
  /// From hexadecimal DER, as tails have it. Throws PackError, about the file `source`, when that
  /// is no key.
  static PublicKey fromHex(const std::string& hex, const std::string& source);
  /// From a PEM file with either half of a key. Throws PackError, about the file, when it has none.
  static PublicKey load(const std::string& path);

  PublicKey(PublicKey&&) noexcept;
  PublicKey& operator=(PublicKey&&) noexcept;
  ~PublicKey();

  /// The length of the key, and of its signatures.
  int modulusBytes() const;
  /// As fingerprint() of signing_key.h has it.
  const std::string& fingerprint() const { return fingerprint_; }
  /// SubjectPublicKeyInfo in DER, in hexadecimal, as tails, update settings and release lists have
  /// it, whatever it was read from.
  std::string hex() const;
  /// Whether `signature` is one of `digest` for the launcher. A malformed one is none.
  bool verifies(const std::string& signature, const Digest& digest) const;

 private:
  PublicKey(std::unique_ptr<RsaHolder> key, std::string fingerprint);
  static PublicKey fromDer(const std::string& der, const std::string& source);

  std::unique_ptr<RsaHolder> key_;
  std::string fingerprint_;
};

/// The bytes of a hexadecimal text, up to the first pair that is none, as the launcher decodes it.
std::string fromHex(const std::string& hex);

}  // namespace quillory::pack
