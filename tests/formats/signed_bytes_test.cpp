#include "formats/signed_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/formats/archive_parts.h"

namespace quillory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::records;
using testing::signatureBlock;
using testing::signatureData;
using testing::signedBody;

// What is signed ends with a value, as a stream of records does.
const std::string kBody = records({"value"});

std::string withBlock(const std::string& body, const std::string& hex) {
  return body + signatureBlock(std::to_string(body.size()), hex);
}

TEST(SplitSignatureBlocks, FindsThemFromTheEnd) {
  const std::string one = withBlock(kBody, "aa");
  const std::string two = withBlock(one, "BB00");
  const SignedBytes first = splitSignatureBlocks(one, 2);
  EXPECT_EQ(first.content, kBody);
  ASSERT_EQ(first.blocks.size(), 1u);
  EXPECT_EQ(first.blocks[0].offset, kBody.size());
  EXPECT_EQ(first.blocks[0].hex, "aa");
  const SignedBytes second = splitSignatureBlocks(two, 2);
  EXPECT_EQ(second.content, kBody);
  ASSERT_EQ(second.blocks.size(), 2u);
  EXPECT_EQ(second.blocks[0].hex, "aa");
  EXPECT_EQ(second.blocks[1].offset, one.size());
  EXPECT_EQ(second.blocks[1].hex, "BB00");
}

TEST(SplitSignatureBlocks, TakesNoMoreThanItMay) {
  const std::string two = withBlock(withBlock(kBody, "aa"), "bb");
  const SignedBytes split = splitSignatureBlocks(two, 1);
  EXPECT_EQ(split.content, withBlock(kBody, "aa"));
  EXPECT_EQ(split.blocks.size(), 1u);
}

TEST(SplitSignatureBlocks, TakesABlockAloneForOneOfNothing) {
  const std::string bytes = withBlock("", "aa");
  const SignedBytes split = splitSignatureBlocks(bytes, 2);
  EXPECT_EQ(split.content, "");
  EXPECT_EQ(split.blocks.size(), 1u);
}

TEST(SplitSignatureBlocks, FindsNoneInWhatIsCutAnywhere) {
  const std::string whole = withBlock(kBody, "aa");
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_THAT(splitSignatureBlocks(std::string_view(whole).substr(0, length), 2).blocks,
                IsEmpty())
        << length;
}

TEST(SplitSignatureBlocks, TakesOneSpellingOnly) {
  const std::string place = std::to_string(kBody.size());
  const char* const path = "qyArcSpBlock_DigitalSignature1";
  for (const std::string& block : {
           records({"1", path, "1", place, "aa"}),
           records({"0", "qyArcSpBlock_DigitalSignature2", "1", place, "aa"}),
           records({"0", path, "2", place, "aa"}),
           records({"0", path, "1", "0", "aa"}),
           records({"0", path, "1", "0" + place, "aa"}),
           records({"0", path, "1", place, ""}),
           records({"0", path, "1", place, "a"}),
           records({"0", path, "1", place, "ag"}),
           records({"0", path, "1", place, std::string(4096, 'a')}),
           records({"0", path, "1", place, "aa", ""}),
       }) {
    const std::string bytes = kBody + block;
    EXPECT_THAT(splitSignatureBlocks(bytes, 2).blocks, IsEmpty());
  }
}

TEST(KeysThatSigned, NamesThoseUnderWhichABlockHolds) {
  // The body of an archive ends with content, so its block is split by hand.
  const std::string archive = signedBody();
  const std::string hex = signatureData("pss_2048");
  const SignedBytes split{archive, {{archive.size(), hex}}};
  const std::string good = signatureData("key_2048");
  const std::string other = signatureData("key_other");
  EXPECT_THAT(keysThatSigned(split, {other, good}), ElementsAre(good));
  EXPECT_THAT(keysThatSigned(split, {other}), IsEmpty());
  EXPECT_THAT(keysThatSigned(split, {}), IsEmpty());
  EXPECT_THAT(keysThatSigned({archive, {}}, {good}), IsEmpty());
}

TEST(KeysThatSigned, PassesOverWhatIsNoKey) {
  const std::string archive = signedBody();
  const std::string hex = signatureData("pss_2048");
  const SignedBytes split{archive, {{archive.size(), hex}}};
  const std::string good = signatureData("key_2048");
  EXPECT_THAT(keysThatSigned(split, {"", "zz", "30", std::string(1000, 'f'), good.substr(2),
                                     good.substr(0, good.size() - 2), good + "zz", good}),
              ElementsAre(good));
}

TEST(KeysThatSigned, AsksEveryBlock) {
  const std::string archive = signedBody();
  const std::string hex = signatureData("pss_2048");
  const std::string good = signatureData("key_2048");
  const SignedBytes split{archive, {{3, hex}, {archive.size(), hex}}};
  EXPECT_THAT(keysThatSigned(split, {good}), ElementsAre(good));
  const SignedBytes wrong{archive, {{3, hex}, {archive.size(), "00"}}};
  EXPECT_THAT(keysThatSigned(wrong, {good}), IsEmpty());
}

}  // namespace
}  // namespace quillory
