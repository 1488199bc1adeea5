#include "formats/archive_signature.h"

#include <cstdlib>
#include <memory>

#include "formats/keccak.h"
#include "formats/mixed_hash.h"
#include "support/owned.h"

namespace quillory {
namespace {

constexpr const char* kMixedName = "mixed";
constexpr int kMixedLength = 64;
constexpr int kSaltLength = 64;
using Digest = std::unique_ptr<unsigned char, HeapFreer>;

const ltc_hash_descriptor* findMixed() {
  const int index = find_hash(kMixedName);
  return index < 0 ? nullptr : &hash_descriptor[index];
}

}  // namespace

bool initHash(Hash_state* state) {
  for (const ltc_hash_descriptor* descriptor :
       {&mixed_descriptor, &sha256_desc, &sha3_256_descriptor}) {
    if (register_hash(descriptor) != -1) continue;
    std::printf("WARNING: Error registering mixed hash");
    return false;
  }
  const ltc_hash_descriptor* mixed = findMixed();
  return mixed != nullptr && mixed->init(state) == CRYPT_OK;
}

bool updateHash(Hash_state* state, const unsigned char* data, int length) {
  const ltc_hash_descriptor* mixed = findMixed();
  if (mixed == nullptr || length < 0) return false;
  return mixed->process(state, data, static_cast<unsigned long>(length)) == CRYPT_OK;
}

unsigned char* doFinal(Hash_state* state) {
  const ltc_hash_descriptor* mixed = findMixed();
  if (mixed == nullptr) return nullptr;
  Digest digest(static_cast<unsigned char*>(std::calloc(kMixedLength, 1)));
  if (!digest || mixed->done(state, digest.get()) != CRYPT_OK) return nullptr;
  return digest.release();
}

bool importPublicKey(const unsigned char* der, int length, Rsa_key* key) {
  ltc_mp = ltm_desc;
  return length > 0 && rsa_import(der, static_cast<unsigned long>(length), key) == CRYPT_OK;
}

Rsa_key* loadDEREncodedPublicKey(const unsigned char* der, int length) {
  std::unique_ptr<Rsa_key, HeapFreer> key(static_cast<Rsa_key*>(std::calloc(1, sizeof(Rsa_key))));
  if (key && importPublicKey(der, length, key.get())) return key.release();
  std::printf("ERROR - unable to import public key.\n");
  return nullptr;
}

void freePublicKey(Rsa_key* key) {
  if (key == nullptr) return;
  rsa_free(key);
  std::free(key);
}

SignatureMatch matchSignature(const unsigned char* signature, int signatureLength,
                              const unsigned char* hash, Rsa_key* key) {
  // Without a key nothing can be verified, and the library would end the process.
  if (key == nullptr) return SignatureMatch::kDiffers;
  if (signatureLength < 1) return SignatureMatch::kMalformed;
  int status = -1;
  const int error =
      rsa_verify_hash_ex(signature, static_cast<unsigned long>(signatureLength), hash, kMixedLength,
                         LTC_PKCS_1_PSS, find_hash(kMixedName), kSaltLength, &status, key);
  if (error != CRYPT_OK) return SignatureMatch::kMalformed;
  return status == 1 ? SignatureMatch::kMatches : SignatureMatch::kDiffers;
}

bool verifySignature(const unsigned char* signature, int signatureLength, const unsigned char* hash,
                     Rsa_key* key) {
  const SignatureMatch match = matchSignature(signature, signatureLength, hash, key);
  if (match == SignatureMatch::kMalformed) std::printf("ERROR - signature verification failed.\n");
  return match == SignatureMatch::kMatches;
}

}  // namespace quillory
