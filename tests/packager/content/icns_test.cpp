#include "packager/content/icns.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/mach_o_bytes.h"

namespace quillory::pack {
namespace {

using namespace std::string_literals;
using testing::bigEndian;
using testing::TempDir;
using testing::writeFile;

std::string png(char width, char height) {
  return "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0"s + width + '\0' + "\0\0"s + height + '\0' + "rest";
}

// What is wrong with a picture or an icon, without its name; "" when nothing is.
std::string flawIn(std::optional<Finding> (*flawOf)(const Subject&, std::string_view),
                   const std::string& bytes) {
  const std::optional<Finding> flaw = flawOf({"it", {"quillory.toml", 4}}, bytes);
  if (!flaw) {
    return "";
  }
  EXPECT_EQ(flaw->rule, "picture");
  EXPECT_EQ(asText(flaw->place), "quillory.toml:4");
  EXPECT_EQ(flaw->what.substr(0, 3), "it ");
  return flaw->what.substr(3);
}
std::string pictureFlaw(const std::string& bytes) { return flawIn(flawOfPicture, bytes); }
std::string iconFlaw(const std::string& bytes) { return flawIn(flawOfIcon, bytes); }

TEST(IcnsFrom, KeepsAnIcon) {
  TempDir dir;
  const std::string icon = "icns\0\0\0\x0cmore"s;
  writeFile(dir / "a.icns", icon);
  EXPECT_EQ(icnsFrom(dir / "a.icns"), icon);
}

TEST(IcnsFrom, PutsAPictureIntoAContainer) {
  TempDir dir;
  const std::string picture = png('\2', '\2');  // 512 pixels
  ASSERT_EQ(picture.size(), 28u);
  writeFile(dir / "a.png", picture);
  EXPECT_EQ(icnsFrom(dir / "a.png"),
            "icns\0\0\0\x2c"s
            "ic09\0\0\0\x24"s +
                picture);
}

TEST(IcnsFrom, RefusesOtherSizes) {
  TempDir dir;
  for (const std::string& picture : {png('\2', '\1'), png('\3', '\3'), std::string("\x89PNG")}) {
    writeFile(dir / "a.png", picture);
    EXPECT_THROW(icnsFrom(dir / "a.png"), PackError);
  }
}

TEST(FlawOfIcon, IsAnIconFileThatIsShorterThanItSays) {
  const std::string flaw = "is an icns file that is cut short or damaged";
  EXPECT_EQ(iconFlaw("icns\0\0\0\x0cmore"s), "");
  EXPECT_EQ(iconFlaw("icns\0\0\0\x0cmor"s), flaw);
  EXPECT_EQ(iconFlaw("icns\0\0\0\x08more"s), flaw);
  for (std::size_t length = 4; length < 9; ++length) {
    EXPECT_EQ(iconFlaw("icns\0\0\0\x0c"s.substr(0, length)), flaw) << length;
  }
  EXPECT_EQ(iconFlaw("icn"), "is neither an icns nor a PNG picture");
  EXPECT_EQ(iconFlaw(""), "is neither an icns nor a PNG picture");
}

TEST(FlawOfIcon, IsASizeThatIconsDoNotHave) {
  EXPECT_EQ(iconFlaw(png('\1', '\1')), "");
  EXPECT_EQ(iconFlaw(png('\2', '\1')),
            "is a picture of 512 by 256 pixels: those of icons are square, of 64, 128, 256, 512 or "
            "1024");
}

TEST(FlawOfPicture, IsADamagedHeader) {
  const std::string whole = png('\3', '\1').substr(0, 26);
  EXPECT_EQ(pictureFlaw(whole), "");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(pictureFlaw(whole.substr(0, length)),
              length < 8 ? "is neither a PNG nor a JPEG picture"
                         : "is a PNG picture that is cut short or damaged")
        << length;
  }
  for (std::size_t at = 0; at < 16; ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    EXPECT_NE(pictureFlaw(changed), "") << at;
  }
  EXPECT_EQ(pictureFlaw(png('\0', '\1')), "is a PNG picture without a single pixel");
  EXPECT_EQ(pictureFlaw(png('\1', '\0')), "is a PNG picture without a single pixel");
}

std::string pngOf(std::uint32_t width, std::uint32_t height) {
  return "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR"s + bigEndian(width) + bigEndian(height) + "rest";
}

TEST(IcnsFrom, HasATypeForEverySizeOfIcons) {
  TempDir dir;
  const std::pair<std::uint32_t, std::string> kinds[] = {
      {64, "icp6"}, {128, "ic07"}, {256, "ic08"}, {512, "ic09"}, {1024, "ic10"}};
  for (const auto& [size, type] : kinds) {
    const std::string picture = pngOf(size, size);
    writeFile(dir / "a.png", picture);
    EXPECT_EQ(icnsFrom(dir / "a.png"), "icns\0\0\0\x2c"s + type + "\0\0\0\x24"s + picture);
  }
  for (const std::uint32_t size : {1u, 16u, 32u, 63u, 65u, 2048u, 0x01000040u}) {
    EXPECT_NE(iconFlaw(pngOf(size, size)), "") << size;
  }
}

TEST(IcnsFrom, NamesTheFile) {
  TempDir dir;
  EXPECT_THROW(icnsFrom(dir / "missing"), PackError);
  writeFile(dir / "a.png", "text");
  try {
    icnsFrom(dir / "a.png");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()), dir / "a.png" +
                                       ": error: the icon is neither an icns nor a PNG picture\n"
                                       "  -> save it as PNG, best of 1024 by 1024 pixels, or as "
                                       "icns");
  }
}

TEST(FlawOfIcon, IsAPictureThatIsCutOrWider) {
  EXPECT_EQ(iconFlaw(pngOf(256, 256).substr(0, 23)),
            "is a PNG picture that is cut short or damaged");
  EXPECT_EQ(iconFlaw(pngOf(0x01000100, 256)),
            "is a picture of 16777472 by 256 pixels: those of icons are square, of 64, 128, 256, "
            "512 or 1024");
}

TEST(FlawOfPicture, TakesWhatTheLauncherShows) {
  const auto shown = [](std::uint32_t width, std::uint32_t height, char depth) {
    return pictureFlaw("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR"s + bigEndian(width) + bigEndian(height) +
                       depth + "\6\0\0\0"s);
  };
  EXPECT_EQ(shown(8192, 4096, 8), "");
  const std::string tooLarge =
      "is larger than what the launcher shows: 8192 by 4096 pixels, 16 MiB, 100 passes";
  EXPECT_EQ(shown(8192, 4097, 8), tooLarge);
  EXPECT_EQ(shown(8192, 4096, 16), tooLarge) << "twice as much once decoded";
  EXPECT_EQ(shown(0xFFFFFFFF, 0xFFFFFFFF, 8), tooLarge);
  // The frame of a JPEG: length, bits, height, width, one component.
  const auto jpegOf = [](const std::string& size) {
    return "\xFF\xD8\xFF\xC0\0\x0B\x08"s + size + "\1\1\x11\0\xFF\xDA"s;
  };
  EXPECT_EQ(pictureFlaw(jpegOf("\1\0\1\0"s)), "");
  EXPECT_EQ(pictureFlaw(jpegOf("\xFF\xFF\xFF\xFF"s)), tooLarge);
  EXPECT_EQ(pictureFlaw("GIF89a\1\0\1\0\0\0\0;"s), "is neither a PNG nor a JPEG picture");
  EXPECT_EQ(pictureFlaw("II*\0\x08\0\0\0"s), "is neither a PNG nor a JPEG picture");
}

}  // namespace
}  // namespace quillory::pack
