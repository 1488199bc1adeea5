// A look at a picture before it is decoded: a small file can ask for any amount of memory and time.
// A TIFF of 122 bytes takes 9.5 gigabytes, a GIF of 45 bytes four, and who reads formats that
// nobody splashes reads them for attackers only. So there are two formats, and limits:
//
//   8192 x 4096 pixels, more than any screen shows
//   128 MiB once decoded, which is that many pixels of 4 bytes
//   16 MiB of file: more is no picture that anybody waits for
//   100 passes over a JPEG: each goes over all pixels, and takes a handful of bytes
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillory {

inline constexpr std::uint64_t kMaxPicturePixels = 1UL << 25;
inline constexpr std::uint64_t kMaxDecodedBytes = 1UL << 27;
inline constexpr std::size_t kMaxPictureFile = 1UL << 24;
inline constexpr int kMaxPicturePasses = 100;

enum class PictureFault {
  kNone,         ///< a decoder may have it; whether it is whole is for that one to see
  kOtherFormat,  ///< neither a PNG nor a JPEG whose header says its size
  kTooLarge,
};

PictureFault faultOfPicture(std::string_view content);

struct PictureFile {
  std::string content;  ///< "" unless it may be decoded
  PictureFault fault = PictureFault::kNone;
};

/// What is in the file at `path`. Nothing, and no fault, where there is none, where it cannot be
/// read, or where it is no file: it is never waited for.
PictureFile readPicture(const char* path);

/// The path of the same picture for screens with two pixels where others have one:
/// "splash@2x.png" beside "splash.png". "" where there is no such file, or one of another owner, as
/// anybody may put into a folder that all users share.
std::string doublePictureOf(const std::string& path);

}  // namespace quillory
