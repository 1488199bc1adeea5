// Hides the encodings that this process never uses, for as long as the scope lasts.
//
// Before its first string GNUstep tries whether there is a converter for each of forty encodings,
// and each try loads a library of its own: 1.5 ms of every start. In the scope iconv_open() refuses
// all but the Unicode ones and ASCII, and GNUstep does without the others from then on. Where the
// user's locale has another encoding, nothing is hidden.
#pragma once

namespace quillory::platform {

/// From the thread that it is made on: others may open what converters they like.
class ScopedEncodings {
 public:
  ScopedEncodings();
  ~ScopedEncodings();
  ScopedEncodings(const ScopedEncodings&) = delete;
  ScopedEncodings& operator=(const ScopedEncodings&) = delete;
};

}  // namespace quillory::platform
