#include "packager/keys/signing_key.h"

#include <sys/stat.h>

#include <array>
#include <utility>
#include <vector>

#include "packager/bytes/byte_sinks.h"
#include "packager/keys/crypto_setup.h"
#include "packager/keys/pem.h"
#include "packager/keys/rsa_holder.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

constexpr long kPublicExponent = 65537;
constexpr unsigned long kSaltLength = 64;

void check(int status, const char* what) {
  if (status == CRYPT_ERROR_READPRNG) {
    throw PackError(
        "the system gives no random numbers, and what is made without them can be guessed",
        "let this program call getrandom, which a sandbox or a very old kernel refuses");
  }
  if (status != CRYPT_OK) {
    throw PackError(std::string(what) + ": " + error_to_string(status));
  }
}

const unsigned char* bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* bytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

std::string hexOf(const unsigned char* bytes, std::size_t count) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  for (std::size_t i = 0; i < count; ++i) {
    hex += kDigits[bytes[i] >> 4];
    hex += kDigits[bytes[i] & 15];
  }
  return hex;
}

std::array<unsigned char, 32> sha256(std::string_view a, std::string_view b = {}) {
  hash_state state;
  std::array<unsigned char, 32> out;
  sha256_init(&state);
  sha256_process(&state, bytesOf(a), a.size());
  if (!b.empty()) {
    sha256_process(&state, bytesOf(b), b.size());
  }
  sha256_done(&state, out.data());
  return out;
}

// Whether the halves belong together: a number that the private one has changed comes back through
// the public one.
bool isWhole(rsa_key& key) {
  const std::size_t size = ltc_mp.unsigned_size(key.N);
  std::string number(size, '\0');
  if (size < 2) {
    return false;
  }
  number.back() = 2;
  std::string changed(size, '\0'), back(size, '\0');
  unsigned long length = size;
  return rsa_exptmod(bytesOf(number), size, bytesOf(changed), &length, PK_PRIVATE, &key) ==
             CRYPT_OK &&
         length == size &&
         rsa_exptmod(bytesOf(changed), size, bytesOf(back), &length, PK_PUBLIC, &key) == CRYPT_OK &&
         length == size && back == number;
}

}  // namespace

SigningKey::SigningKey(std::unique_ptr<RsaHolder> key) : key_(std::move(key)) {}
SigningKey::SigningKey(SigningKey&&) noexcept = default;
SigningKey& SigningKey::operator=(SigningKey&&) noexcept = default;
SigningKey::~SigningKey() = default;

SigningKey SigningKey::generate(int bits) {
  setUpCrypto();
  auto made = std::make_unique<RsaHolder>();
  check(rsa_make_key(nullptr, find_prng(kSystemRandom), bits / 8, kPublicExponent, &made->key),
        "the key could not be made");
  made->filled = true;
  return SigningKey(std::move(made));
}

SigningKey SigningKey::load(const std::string& path) {
  setUpCrypto();
  const PemBlock block = readPem(path);
  auto loaded = std::make_unique<RsaHolder>();
  int status = CRYPT_ERROR;
  if (block.kind == "RSA PRIVATE KEY") {
    status = rsa_import(bytesOf(block.der), block.der.size(), &loaded->key);
  } else if (block.kind == "PRIVATE KEY") {
    status = rsa_import_pkcs8(bytesOf(block.der), block.der.size(), nullptr, 0, &loaded->key);
  } else {
    throw PackError("holds \"" + block.kind + "\" and not an RSA private key", kMakeKeyAdvice,
                    {path, 0});
  }
  if (status != CRYPT_OK) {
    throw PackError("the key cannot be read; only RSA keys can sign archives", kMakeKeyAdvice,
                    {path, 0});
  }
  loaded->filled = true;
  SigningKey key(std::move(loaded));
  if (key.key_->key.type != PK_PRIVATE) {
    throw PackError("is the public half of a key", "name the file with the private key", {path, 0});
  }
  if (!isWhole(key.key_->key)) {
    throw PackError("the key is damaged: what it signs does not hold under its own public half",
                    "restore it from your backup", {path, 0});
  }
  return key;
}

std::string SigningKey::exportAs(int kind) const {
  std::string der(16384, '\0');
  unsigned long length = der.size();
  check(rsa_export(reinterpret_cast<unsigned char*>(der.data()), &length, kind, &key_->key),
        "the key could not be written");
  der.resize(length);
  return der;
}

std::string SigningKey::privatePem() const {
  return pemText({"RSA PRIVATE KEY", exportAs(PK_PRIVATE)});
}

std::string SigningKey::publicPem() const { return pemText({"PUBLIC KEY", publicDer()}); }

std::string SigningKey::publicDer() const { return exportAs(PK_PUBLIC | PK_STD); }

std::string SigningKey::publicHex() const { return toHex(publicDer()); }

int SigningKey::modulusBytes() const { return static_cast<int>(ltc_mp.unsigned_size(key_->key.N)); }

std::string SigningKey::sign(const Digest& digest, Salt salt) const {
  const char* generator = kSystemRandom;
  prng_state state;
  if (salt == Salt::kDerived) {
    generator = "chacha20";
    const std::string_view signedDigest(reinterpret_cast<const char*>(digest.data()),
                                        digest.size());
    const auto seed = sha256(exportAs(PK_PRIVATE), signedDigest);
    check(chacha20_prng_start(&state), "the salt");
    check(chacha20_prng_add_entropy(seed.data(), seed.size(), &state), "the salt");
    check(chacha20_prng_ready(&state), "the salt");
  }
  std::string signature(static_cast<std::size_t>(modulusBytes()), '\0');
  unsigned long length = signature.size();
  const int status = rsa_sign_hash_ex(
      digest.data(), digest.size(), reinterpret_cast<unsigned char*>(signature.data()), &length,
      LTC_PKCS_1_PSS, &state, find_prng(generator), find_hash("mixed"), kSaltLength, &key_->key);
  if (salt == Salt::kDerived) {
    chacha20_prng_done(&state);
  }
  check(status, "the archive could not be signed");
  signature.resize(length);
  return signature;
}

bool isReadableByOthers(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && (info.st_mode & 077) != 0;
}

std::string fingerprint(const std::string& der) {
  const auto digest = sha256(der);
  const std::string hex = hexOf(digest.data(), digest.size());
  std::string groups = hex.substr(0, 2);
  for (std::size_t at = 2; at < hex.size(); at += 2) {
    groups += ':' + hex.substr(at, 2);
  }
  return groups;
}

std::string toHex(std::string_view bytes) { return hexOf(bytesOf(bytes), bytes.size()); }

}  // namespace quillory::pack
