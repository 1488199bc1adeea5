#include "support/picture_limits.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quillory {
namespace {

using namespace std::string_view_literals;

// The signature, and the length and name of the chunk that always comes first; behind them stand
// width and height, four bytes each, and a byte each for the depth and the kind of a pixel.
constexpr std::string_view kPngStart = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"sv;
constexpr std::size_t kPngHeaderLength = kPngStart.size() + 10;

constexpr std::string_view kJpegStart = "\xFF\xD8\xFF"sv;
constexpr std::uint64_t kDecodedPixelBytes = 4;

std::uint64_t byteOf(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

// `count` bytes, the highest first.
std::uint64_t numberAt(std::string_view bytes, std::size_t at, std::size_t count) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < count; ++i) number = number << 8 | byteOf(bytes, at + i);
  return number;
}

PictureFault faultOfSize(std::uint64_t width, std::uint64_t height, std::uint64_t pixelBytes) {
  // Of a picture of no height none is decoded.
  if (height == 0) return PictureFault::kNone;
  const std::uint64_t mostPixels = std::min(kMaxPicturePixels, kMaxDecodedBytes / pixelBytes);
  return width > mostPixels / height ? PictureFault::kTooLarge : PictureFault::kNone;
}

PictureFault faultOfPng(std::string_view png) {
  if (png.size() < kPngHeaderLength) return PictureFault::kOtherFormat;
  const std::size_t at = kPngStart.size();
  const std::uint64_t depth = byteOf(png, at + 8);
  // Red, green, blue and opacity, whatever the file has of them.
  const std::uint64_t pixelBytes = depth > 8 ? 2 * kDecodedPixelBytes : kDecodedPixelBytes;
  return faultOfSize(numberAt(png, at, 4), numberAt(png, at + 4, 4), pixelBytes);
}

// The parts of a JPEG, one after another, as decoders find them.
class JpegWalk {
 public:
  explicit JpegWalk(std::string_view jpeg) : jpeg_(jpeg) {}

  PictureFault walk() {
    while (const unsigned marker = nextMarker()) {
      if (marker == 0xD9) break;
      if (standsAlone(marker)) continue;
      const std::size_t content = at_ + 2;
      if (content > jpeg_.size()) break;
      const std::size_t length = numberAt(jpeg_, at_, 2);
      if (isFrame(marker) && takeFrame(content) == PictureFault::kTooLarge)
        return PictureFault::kTooLarge;
      if (marker == 0xDA && ++passes_ > kMaxPicturePasses) return PictureFault::kTooLarge;
      at_ += std::max<std::size_t>(length, 2);
    }
    return hasFrame_ ? PictureFault::kNone : PictureFault::kOtherFormat;
  }

 private:
  // Behind any bytes that are none, such as the picture's own, and 0 at the end.
  unsigned nextMarker() {
    while (at_ + 1 < jpeg_.size()) {
      const std::uint64_t code = byteOf(jpeg_, at_ + 1);
      const bool isMarker = byteOf(jpeg_, at_) == 0xFF && code != 0 && code != 0xFF;
      at_ += isMarker ? 2 : 1;
      if (isMarker) return static_cast<unsigned>(code);
    }
    return 0;
  }

  static bool standsAlone(unsigned marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
  }
  static bool isFrame(unsigned marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
  }

  // Behind one byte for the depth stand height and width, two bytes each.
  PictureFault takeFrame(std::size_t content) {
    if (content + 5 > jpeg_.size()) return PictureFault::kNone;
    hasFrame_ = true;
    return faultOfSize(numberAt(jpeg_, content + 3, 2), numberAt(jpeg_, content + 1, 2),
                       kDecodedPixelBytes);
  }

  std::string_view jpeg_;
  std::size_t at_ = 2;
  int passes_ = 0;
  bool hasFrame_ = false;
};

bool readAll(int file, std::string& content) {
  std::size_t done = 0;
  while (done < content.size()) {
    const ssize_t count = read(file, content.data() + done, content.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

PictureFile readOpened(int file) {
  struct stat info = {};
  if (fstat(file, &info) != 0 || !S_ISREG(info.st_mode)) return {};
  if (info.st_size > static_cast<off_t>(kMaxPictureFile))
    return {.content = "", .fault = PictureFault::kTooLarge};
  PictureFile picture;
  picture.content.resize(static_cast<std::size_t>(info.st_size));
  if (!readAll(file, picture.content)) return {};
  picture.fault = faultOfPicture(picture.content);
  if (picture.fault != PictureFault::kNone) picture.content.clear();
  return picture;
}

}  // namespace

PictureFault faultOfPicture(std::string_view content) {
  if (content.size() > kMaxPictureFile) return PictureFault::kTooLarge;
  if (content.starts_with(kPngStart)) return faultOfPng(content);
  if (content.starts_with(kJpegStart)) return JpegWalk(content).walk();
  return PictureFault::kOtherFormat;
}

PictureFile readPicture(const char* path) {
  // Without waiting, as a pipe in the place of the file would have it.
  const int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return {};
  PictureFile picture = readOpened(file);
  close(file);
  return picture;
}

std::string doublePictureOf(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  if (dot == path.npos || path.find('/', dot) != path.npos) return "";
  const std::string twin = path.substr(0, dot) + "@2x" + path.substr(dot);
  struct stat picture, found;
  const bool isOurs = lstat(path.c_str(), &picture) == 0 && lstat(twin.c_str(), &found) == 0 &&
                      S_ISREG(found.st_mode) && found.st_uid == picture.st_uid;
  return isOurs ? twin : "";
}

}  // namespace quillory
