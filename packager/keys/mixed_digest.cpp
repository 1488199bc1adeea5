#include "packager/keys/mixed_digest.h"

#include "formats/mixed_hash.h"

namespace quillory::pack {

struct MixedDigest::State {
  hash_state hash;
};

MixedDigest::MixedDigest() : state_(std::make_unique<State>()) { mixed_init(&state_->hash); }
MixedDigest::~MixedDigest() = default;

void MixedDigest::update(std::string_view bytes) {
  if (!bytes.empty()) {  // the library ends the process over a null pointer
    mixed_process(&state_->hash, reinterpret_cast<const unsigned char*>(bytes.data()),
                  bytes.size());
  }
}

Digest MixedDigest::finish() {
  Digest digest;
  mixed_done(&state_->hash, digest.data());
  return digest;
}

}  // namespace quillory::pack
