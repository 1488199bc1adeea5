// The 64-byte digest that archive signatures are made over, fed piece by piece.
#pragma once
#include <array>
#include <memory>
#include <string_view>

namespace quillory::pack {

using Digest = std::array<unsigned char, 64>;

class MixedDigest {
 public:
  MixedDigest();
  ~MixedDigest();
  /// In pieces of any size, empty ones too.
  void update(std::string_view bytes);
  /// The digest of what came so far; nothing may follow.
  Digest finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace quillory::pack
