#include "support/picture_limits.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using namespace std::string_literals;
using testing::TempDir;
using testing::writeFile;

const std::string kStart = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"s;

// Width and height in eight bytes, then depth and kind of the pixels.
std::string png(const std::string& size, char depth = 8) { return kStart + size + depth + '\6'; }

std::string jpegSegment(int marker, const std::string& content) {
  const std::size_t length = content.size() + 2;
  return std::string("\xFF") + static_cast<char>(marker) + static_cast<char>(length >> 8) +
         static_cast<char>(length & 0xFF) + content;
}
// Height and width in four bytes.
std::string frame(const std::string& size, int marker = 0xC0) {
  return jpegSegment(marker, "\x08" + size + "\x01\x01\x11\0"s);
}
const std::string kJpegStart = "\xFF\xD8"s + jpegSegment(0xE0, "JFIF\0\1\1\0\0\1\0\1\0\0"s);
const std::string kSmall = "\x01\x0e\x01\xe0"s;     // 270 high, 480 wide
const std::string kLargest = "\x10\x00\x20\x00"s;   // 4096 high, 8192 wide
const std::string kTooLarge = "\x10\x01\x20\x00"s;  // one row more
const std::string kPass = jpegSegment(0xDA, "\1\1\0\0\x3f\0"s) + "abc\xFF\0def"s;

void expectFault(const std::string& content, PictureFault fault) {
  EXPECT_EQ(faultOfPicture(content), fault) << ::testing::PrintToString(content.substr(0, 40));
}

TEST(FaultOfPicture, IsNoneForAPngThatAScreenShows) {
  expectFault(png("\0\0\x01\xe0\0\0\x01\x0e"s), PictureFault::kNone);  // 480 x 270
  expectFault(png("\0\0\x20\x00\0\0\x10\x00"s), PictureFault::kNone);  // 8192 x 4096
  expectFault(png("\0\0\0\0\xff\xff\xff\xff"s), PictureFault::kNone);  // nothing wide
  expectFault(png("\xff\xff\xff\xff\0\0\0\0"s), PictureFault::kNone);
}

TEST(FaultOfPicture, TellsOfAPngWithMorePixels) {
  expectFault(png("\0\0\x20\x01\0\0\x10\x00"s), PictureFault::kTooLarge);  // 8193 x 4096
  expectFault(png("\0\0\xea\x60\0\0\xea\x60"s), PictureFault::kTooLarge);  // 60000 x 60000
  expectFault(png("\xff\xff\xff\xff\xff\xff\xff\xff"s), PictureFault::kTooLarge);
}

TEST(FaultOfPicture, CountsTheBytesOfAPngOfSixteenBits) {
  expectFault(png("\0\0\x10\x00\0\0\x10\x00"s, 16), PictureFault::kNone);  // 4096 x 4096
  expectFault(png("\0\0\x10\x01\0\0\x10\x00"s, 16), PictureFault::kTooLarge);
}

TEST(FaultOfPicture, TellsOfAPngWithoutAWholeHeader) {
  const std::string whole = png("\0\0\x01\xe0\0\0\x01\x0e"s);
  for (std::size_t length = 0; length < whole.size(); ++length)
    expectFault(whole.substr(0, length), PictureFault::kOtherFormat);
  std::string other = whole;
  other.replace(12, 4, "tEXt");
  expectFault(other + whole, PictureFault::kOtherFormat);
}

TEST(FaultOfPicture, IsNoneForAJpegThatAScreenShows) {
  for (const std::string& size : {kSmall, kLargest}) {
    expectFault(kJpegStart + frame(size) + kPass + "\xFF\xD9", PictureFault::kNone);
    expectFault(kJpegStart + frame(size), PictureFault::kNone);
    expectFault(kJpegStart + frame(size, 0xC2) + kPass + kPass, PictureFault::kNone);
  }
  // Fill bytes and stray ones stand in front of a marker, and decoders go over them.
  expectFault(kJpegStart + "xyz\xFF\0\xFF\xFF"s + frame(kSmall), PictureFault::kNone);
}

TEST(FaultOfPicture, TellsOfAJpegWithMorePixels) {
  for (const int marker : {0xC0, 0xC1, 0xC2, 0xC3, 0xC5, 0xC9, 0xCA, 0xCF})
    expectFault(kJpegStart + frame(kTooLarge, marker) + kPass, PictureFault::kTooLarge);
  expectFault(kJpegStart + frame("\xff\xff\xff\xff"), PictureFault::kTooLarge);
  expectFault(kJpegStart + "xyz\xFF\0\xFF\xFF"s + frame(kTooLarge), PictureFault::kTooLarge);
  expectFault(kJpegStart + frame(kSmall) + frame(kTooLarge), PictureFault::kTooLarge);
}

// Tables, whose markers stand between those of frames, have no size.
TEST(FaultOfPicture, TakesNoTableOfAJpegForItsFrame) {
  for (const int marker : {0xC4, 0xC8, 0xCC, 0xDB, 0xE1, 0xFE})
    expectFault(kJpegStart + frame(kTooLarge, marker) + frame(kSmall), PictureFault::kNone);
}

TEST(FaultOfPicture, TellsOfAJpegWithoutAFrame) {
  expectFault(kJpegStart, PictureFault::kOtherFormat);
  expectFault(kJpegStart + kPass, PictureFault::kOtherFormat);
  expectFault(kJpegStart + "\xFF\xD9" + frame(kTooLarge), PictureFault::kOtherFormat);
  expectFault(kJpegStart + jpegSegment(0xE1, frame(kTooLarge)), PictureFault::kOtherFormat);
  const std::string whole = kJpegStart + frame(kSmall);
  for (std::size_t length = 0; length < kJpegStart.size() + 9; ++length)
    expectFault(whole.substr(0, length), PictureFault::kOtherFormat);
}

TEST(FaultOfPicture, CountsThePassesOverAJpeg) {
  std::string passes;
  for (int i = 0; i < 100; ++i) passes += kPass;
  expectFault(kJpegStart + frame(kSmall) + passes, PictureFault::kNone);
  expectFault(kJpegStart + frame(kSmall) + passes + kPass, PictureFault::kTooLarge);
}

TEST(FaultOfPicture, TellsOfEveryOtherFormat) {
  for (const std::string& content :
       {""s, "no picture"s, "GIF89a\xff\xff\xff\xff\x80\0\0"s, "II*\0\x08\0\0\0"s,
        "MM\0*\0\0\0\x08"s, "BM\x36\0\0\0"s, "\0\0\1\0\1\0"s, "P6 60000 60000 255\n"s,
        "icns\0\0\0\x08"s, "RIFF\0\0\0\0WEBP"s, "%!PS-Adobe"s, "\xFF\xD8"s})
    expectFault(content, PictureFault::kOtherFormat);
}

TEST(FaultOfPicture, TellsOfAFileThatIsTooLarge) {
  const std::string start = png("\0\0\x01\xe0\0\0\x01\x0e"s);
  expectFault(start + std::string((1 << 24) - start.size(), '\0'), PictureFault::kNone);
  expectFault(start + std::string((1 << 24) - start.size() + 1, '\0'), PictureFault::kTooLarge);
}

class ReadPicture : public ::testing::Test {
 protected:
  void expectRead(const std::string& content, PictureFault fault) const {
    const PictureFile picture = readPicture((dir_ / "file").c_str());
    EXPECT_EQ(picture.content, content);
    EXPECT_EQ(picture.fault, fault);
  }
  TempDir dir_;
};

TEST_F(ReadPicture, GivesWhatMayBeDecodedAndNothingElse) {
  const std::string good = png("\0\0\x01\xe0\0\0\x01\x0e"s) + "more"s;
  writeFile(dir_ / "file", good);
  expectRead(good, PictureFault::kNone);
  writeFile(dir_ / "file", png("\xff\xff\xff\xff\xff\xff\xff\xff"s));
  expectRead("", PictureFault::kTooLarge);
  writeFile(dir_ / "file", "GIF89a");
  expectRead("", PictureFault::kOtherFormat);
}

TEST_F(ReadPicture, GivesNothingWhereThereIsNoFile) {
  expectRead("", PictureFault::kNone);
  std::filesystem::create_directory(dir_ / "file");
  expectRead("", PictureFault::kNone);
}

TEST_F(ReadPicture, WaitsForNoPipe) {
  ASSERT_EQ(mkfifo((dir_ / "file").c_str(), 0600), 0);
  expectRead("", PictureFault::kNone);
}

TEST_F(ReadPicture, ReadsNothingOfAFileThatIsTooLarge) {
  writeFile(dir_ / "file", png("\0\0\x01\xe0\0\0\x01\x0e"s));
  std::filesystem::resize_file(dir_ / "file", std::uintmax_t{1} << 40);
  expectRead("", PictureFault::kTooLarge);
}

TEST(DoublePictureOf, LiesBesideThePicture) {
  const TempDir dir;
  writeFile(dir / "a.b/splash.png", "1");
  writeFile(dir / "a.b/other", "1");
  EXPECT_EQ(doublePictureOf(dir / "a.b/splash.png"), "");
  writeFile(dir / "a.b/splash@2x.png", "2");
  EXPECT_EQ(doublePictureOf(dir / "a.b/splash.png"), dir / "a.b/splash@2x.png");
  EXPECT_EQ(doublePictureOf(dir / "a.b/other"), "") << "the dot is that of the folder";
  EXPECT_EQ(doublePictureOf(dir / "a.b/none.png"), "");
}

TEST(DoublePictureOf, IsNoLinkAndNoFolder) {
  const TempDir dir;
  writeFile(dir / "splash.png", "1");
  writeFile(dir / "elsewhere.png", "2");
  std::filesystem::create_symlink(dir / "elsewhere.png", dir / "splash@2x.png");
  EXPECT_EQ(doublePictureOf(dir / "splash.png"), "");
  std::filesystem::remove(dir / "splash@2x.png");
  std::filesystem::create_directory(dir / "splash@2x.png");
  EXPECT_EQ(doublePictureOf(dir / "splash.png"), "");
}

}  // namespace
}  // namespace quillory
