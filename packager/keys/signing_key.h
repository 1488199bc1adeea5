// The RSA key that signs archives: made, kept in a PEM file, and used.
#pragma once
#include <memory>
#include <string>

#include "packager/keys/mixed_digest.h"

namespace quillory::pack {

/// Modulus in bytes below which no signature can hold: 64 of digest, 64 of salt and two more.
inline constexpr int kSmallestModulus = 130;
/// Hexadecimal signatures are read into 4096 bytes.
inline constexpr int kLargestModulus = 2047;

enum class Salt {
  kRandom,
  kDerived,  ///< from the private key and the digest: the same input gives the same signature
};

struct RsaHolder;

class SigningKey {
 public:
  SigningKey(SigningKey&&) noexcept;
  SigningKey& operator=(SigningKey&&) noexcept;
  ~SigningKey();

  /// A new key with the usual public exponent. Takes seconds for large keys. Throws PackError when
  /// the library makes none of that length, or the system gives no random numbers.
  static SigningKey generate(int bits);
  /// Reads "RSA PRIVATE KEY" and unencrypted "PRIVATE KEY" files. Throws PackError with the way out
  /// for everything else, and for a key whose halves do not belong together.
  static SigningKey load(const std::string& path);

  /// PKCS #1 in PEM, as every tool for keys reads it.
  std::string privatePem() const;
  /// The public half in PEM, as openssl writes it: SubjectPublicKeyInfo.
  std::string publicPem() const;
  /// SubjectPublicKeyInfo in DER, which the launcher and Java's key factories read.
  std::string publicDer() const;
  /// The same in hexadecimal, as tails have it.
  std::string publicHex() const;
  /// The length of the key, and of its signatures.
  int modulusBytes() const;

  /// RSA-PSS, mask and digest "mixed", 64 bytes of salt. Throws PackError when the key is too short
  /// for that, or the system gives no random numbers for a salt.
  std::string sign(const Digest& digest, Salt salt) const;

 private:
  explicit SigningKey(std::unique_ptr<RsaHolder> key);
  std::string exportAs(int kind) const;

  std::unique_ptr<RsaHolder> key_;
};

/// Whether the mode gives other people of this machine any right to the key file. False for one
/// that is not there.
bool isReadableByOthers(const std::string& path);

/// SHA-256 of a public key's DER, in groups of two digits: what people compare by eye.
std::string fingerprint(const std::string& der);

/// Lower-case hexadecimal text.
std::string toHex(std::string_view bytes);

}  // namespace quillory::pack
