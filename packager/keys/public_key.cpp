#include "packager/keys/public_key.h"

#include <utility>
#include <vector>

#include "formats/archive_signature.h"
#include "formats/text_encodings.h"
#include "packager/keys/crypto_setup.h"
#include "packager/keys/pem.h"
#include "packager/keys/rsa_holder.h"
#include "packager/keys/signing_key.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

std::string fromHex(const std::string& hex) {
  const std::vector<unsigned char> bytes = bytesOfHex(hex);
  return {bytes.begin(), bytes.end()};
}

PublicKey::PublicKey(std::unique_ptr<RsaHolder> key, std::string fingerprint)
    : key_(std::move(key)), fingerprint_(std::move(fingerprint)) {}
PublicKey::PublicKey(PublicKey&&) noexcept = default;
PublicKey& PublicKey::operator=(PublicKey&&) noexcept = default;
PublicKey::~PublicKey() = default;

PublicKey PublicKey::fromDer(const std::string& der, const std::string& source) {
  setUpCrypto();
  auto read = std::make_unique<RsaHolder>();
  if (!importPublicKey(bytesOf(der), static_cast<int>(der.size()), &read->key)) {
    throw PackError("holds no RSA public key", "", {source, 0});
  }
  read->filled = true;
  return {std::move(read), pack::fingerprint(der)};
}

PublicKey PublicKey::fromHex(const std::string& hex, const std::string& source) {
  return fromDer(pack::fromHex(hex), source);
}

PublicKey PublicKey::load(const std::string& path) {
  const PemBlock block = readPem(path);
  if (block.kind == "PUBLIC KEY" || block.kind == "RSA PUBLIC KEY") {
    return fromDer(block.der, path);
  }
  return fromDer(SigningKey::load(path).publicDer(), path);
}

int PublicKey::modulusBytes() const { return static_cast<int>(ltc_mp.unsigned_size(key_->key.N)); }

std::string PublicKey::hex() const {
  std::string der(16384, '\0');
  unsigned long length = der.size();
  if (rsa_export(reinterpret_cast<unsigned char*>(der.data()), &length, PK_PUBLIC | PK_STD,
                 &key_->key) != CRYPT_OK) {
    throw PackError("the key could not be written");
  }
  return toHex(std::string_view(der).substr(0, length));
}

bool PublicKey::verifies(const std::string& signature, const Digest& digest) const {
  return matchSignature(bytesOf(signature), static_cast<int>(signature.size()), digest.data(),
                        &key_->key) == SignatureMatch::kMatches;
}

}  // namespace quillory::pack
