#include "lzma/lzma_alone.h"

#include <gtest/gtest.h>

#include <string>

namespace quillory {
namespace {

using namespace std::string_literals;

// "hello\n" as `xz --format=lzma` writes it: level 6, length unknown, end marker.
const std::string kHello =
    "\x5d\x00\x00\x80\x00\xff\xff\xff\xff\xff\xff\xff\xff"
    "\x00\x34\x19\x49\xee\x8d\xdd\x3d\x3a\xdf\xff\xff\xdd\x12\x00\x00"s;

LzmaSink appendTo(std::string& text) {
  return [&text](const unsigned char* data, std::size_t size) {
    text.append(reinterpret_cast<const char*>(data), size);
    return true;
  };
}

TEST(LzmaDecoder, UnpacksWhatXzWrote) {
  std::string plain;
  LzmaCoder coder = LzmaCoder::decoder(appendTo(plain));
  EXPECT_TRUE(coder.write(kHello.data(), kHello.size()));
  EXPECT_TRUE(coder.finish());
  EXPECT_EQ(plain, "hello\n");
}

TEST(LzmaDecoder, UnpacksAStreamThatComesByteByByte) {
  std::string plain;
  LzmaCoder coder = LzmaCoder::decoder(appendTo(plain));
  for (const char byte : kHello) {
    ASSERT_TRUE(coder.write(&byte, 1));
  }
  EXPECT_TRUE(coder.finish());
  EXPECT_EQ(plain, "hello\n");
}

TEST(LzmaDecoder, RefusesAStreamCutAtAnyLength) {
  for (std::size_t length = 0; length < kHello.size(); ++length) {
    SCOPED_TRACE(length);
    std::string plain;
    LzmaCoder coder = LzmaCoder::decoder(appendTo(plain));
    EXPECT_TRUE(coder.write(kHello.data(), length));
    EXPECT_FALSE(coder.finish());
    EXPECT_EQ(coder.error(), "the LZMA stream is cut short");
  }
}

TEST(LzmaDecoder, RefusesBytesBehindTheEnd) {
  for (const bool inOneCall : {true, false}) {
    std::string plain;
    LzmaCoder coder = LzmaCoder::decoder(appendTo(plain));
    const bool taken = inOneCall ? coder.write((kHello + "x").data(), kHello.size() + 1)
                                 : coder.write(kHello.data(), kHello.size()) && coder.write("x", 1);
    EXPECT_FALSE(taken);
    EXPECT_FALSE(coder.finish());
    EXPECT_EQ(coder.error(), "there are bytes behind the end of the LZMA stream");
  }
}

TEST(LzmaDecoder, RefusesWhatIsNoLzma) {
  std::string plain;
  LzmaCoder coder = LzmaCoder::decoder(appendTo(plain));
  const std::string text = "\xff this is a plain text file, not an archive\n";
  EXPECT_FALSE(coder.write(text.data(), text.size()));
  EXPECT_EQ(coder.error(), "not an LZMA-alone stream");
}

TEST(LzmaDecoder, RefusesADictionaryThatOnlyTheHeaderClaims) {
  std::string claim = kHello;
  claim[4] = '\x40';  // the dictionary is 1 GiB now
  std::string plain;
  LzmaCoder coder = LzmaCoder::decoder(appendTo(plain));
  EXPECT_FALSE(coder.write(claim.data(), claim.size()));
  EXPECT_EQ(coder.error(), "the LZMA stream asks for a dictionary of more than 256 MiB");
}

TEST(LzmaEncoder, WritesTheBytesThatXzWrites) {
  std::string packed;
  LzmaCoder coder = LzmaCoder::encoder(kLzmaDefaultLevel, appendTo(packed));
  EXPECT_TRUE(coder.write("hello\n", 6));
  EXPECT_TRUE(coder.finish());
  EXPECT_EQ(packed, kHello);
}

TEST(LzmaEncoder, GivesTheSameBytesWhateverThePieces) {
  std::string text;
  for (int i = 0; i < 40000; ++i) {
    text += std::to_string(i * 7919 % 10007) + ' ';
  }
  std::string whole;
  LzmaCoder once = LzmaCoder::encoder(1, appendTo(whole));
  ASSERT_TRUE(once.write(text.data(), text.size()) && once.finish());
  std::string pieced;
  LzmaCoder pieces = LzmaCoder::encoder(1, appendTo(pieced));
  for (std::size_t at = 0; at < text.size(); at += 777) {
    ASSERT_TRUE(pieces.write(text.data() + at, std::min<std::size_t>(777, text.size() - at)));
  }
  ASSERT_TRUE(pieces.finish());
  EXPECT_EQ(pieced, whole);
}

TEST(LzmaEncoder, RefusesALevelThatDoesNotExist) {
  for (const int level : {-1, 10}) {
    std::string packed;
    LzmaCoder coder = LzmaCoder::encoder(level, appendTo(packed));
    EXPECT_FALSE(coder.write("x", 1));
    EXPECT_FALSE(coder.finish());
    EXPECT_EQ(coder.error(), "the compression level is not 0 to 9");
    EXPECT_EQ(packed, "");
  }
}

TEST(LzmaEncoder, IsTunedAsItIsTold) {
  std::string packed;
  LzmaTuning tuning;
  tuning.literalContextBits = 4;
  tuning.positionBits = 0;
  tuning.dictionary = 1 << 20;
  LzmaCoder coder = LzmaCoder::encoder(6, appendTo(packed), tuning);
  ASSERT_TRUE(coder.write("hello\n", 6) && coder.finish());
  // (pb * 5 + lp) * 9 + lc, then the dictionary.
  EXPECT_EQ(packed.substr(0, 5), std::string("\x04\0\0\x10\0", 5));
  std::string plain;
  LzmaCoder back = LzmaCoder::decoder(appendTo(plain));
  EXPECT_TRUE(back.write(packed.data(), packed.size()) && back.finish());
  EXPECT_EQ(plain, "hello\n");
}

TEST(LzmaEncoder, AsksForNoDictionaryThatADecoderRefuses) {
  std::string packed;
  LzmaTuning tuning;
  tuning.dictionary = std::size_t{1} << 30;
  LzmaCoder coder = LzmaCoder::encoder(0, appendTo(packed), tuning);
  ASSERT_TRUE(coder.finish()) << coder.error();
  EXPECT_EQ(packed.substr(1, 4), std::string("\0\0\0\x10", 4));
}

TEST(LzmaEncoder, RefusesATuningThatThereIsNot) {
  LzmaTuning tuning;
  tuning.literalPositionBits = 2;  // five bits with those of the context
  LzmaCoder coder = LzmaCoder::encoder(
      6, [](const unsigned char*, std::size_t) { return true; }, tuning);
  EXPECT_FALSE(coder.write("x", 1));
  EXPECT_EQ(coder.error(), "unsupported LZMA options");
}

TEST(LzmaEncoder, StopsWhenTheSinkFails) {
  LzmaCoder coder = LzmaCoder::encoder(0, [](const unsigned char*, std::size_t) { return false; });
  coder.write("x", 1);
  EXPECT_FALSE(coder.finish());
  EXPECT_EQ(coder.error(), "the output could not be written");
}

}  // namespace
}  // namespace quillory
