#include "formats/property_block.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/harness/page_example.h"
#include "tests/harness/records.h"

namespace quillory {
namespace {

using testing::pageExample;
using testing::records;
using namespace std::string_literals;

TEST(PropertyBlock, IsTwoZeroBytesWhenEmpty) {
  const PropertyBlock block;
  EXPECT_EQ(block.bytes(), "\0\0"s);
  EXPECT_EQ(propsLen(block), 0U);
}

TEST(PropertyBlock, CopyHasItsOwnEntries) {
  PropertyBlock block;
  appendProp(block, "abc");
  PropertyBlock copy = block;
  appendProp(copy, "def");
  EXPECT_EQ(block.bytes(), "abc\0\0"s);
  EXPECT_EQ(copy.bytes(), "abc\0def\0\0"s);
}

TEST(PropsLen, LeavesOutTheLastTerminator) {
  PropertyBlock block;
  appendProp(block, "a");
  EXPECT_EQ(propsLen(block), 1U);
  appendProp(block, "bc");
  EXPECT_EQ(propsLen(block), 4U);
}

TEST(AppendProp, PutsAnEntryBehindTheLastOne) {
  PropertyBlock block;
  appendProp(block, "abc");
  EXPECT_EQ(block.bytes(), "abc\0\0"s);
  appendProp(block, "text");
  EXPECT_EQ(block.bytes(), "abc\0text\0\0"s);
}

TEST(AppendProp, StoresAnEmptyTextAsTheByteFour) {
  PropertyBlock block;
  appendProp(block, "");
  EXPECT_EQ(block.bytes(), "\x04\0\0"s);
  appendProp(block, "");
  EXPECT_EQ(block.bytes(), "\x04\0\x04\0\0"s);
}

TEST(AppendProp, CutsATextAtAZeroByte) {
  PropertyBlock block;
  appendProp(block, "ab\0cd"s);
  appendProp(block, "\0cd"s);
  EXPECT_EQ(block.bytes(), "ab\0\x04\0\0"s);
}

TEST(ExtendProp, JoinsATextToTheLastEntry) {
  PropertyBlock block;
  appendProp(block, "one");
  appendProp(block, "two");
  extendProp(block, "three");
  EXPECT_EQ(block.bytes(), "one\0twothree\0\0"s);
}

TEST(ExtendProp, MakesTheFirstEntryOfAnEmptyBlock) {
  PropertyBlock block;
  extendProp(block, "text");
  EXPECT_EQ(block.bytes(), "text\0\0"s);
}

TEST(ExtendProp, NeverSubstitutesAnEmptyText) {
  PropertyBlock block;
  extendProp(block, "");
  EXPECT_EQ(block.bytes(), "\0\0"s);
  appendProp(block, "abc");
  extendProp(block, "");
  EXPECT_EQ(block.bytes(), "abc\0\0"s);
}

TEST(AddStaticProperty, AddsKeyAndValue) {
  PropertyBlock block;
  addStaticProperty(block, "app_name", "Demo");
  EXPECT_EQ(block.bytes(), records({"qystat_app_name", "Demo", ""}));
  EXPECT_EQ(propsLen(block), 20U);
}

TEST(AddStaticProperty, KeepsEveryByteOfAValue) {
  PropertyBlock block;
  addStaticProperty(block, "a=b", "\"x\"\n=\x01\xff");
  EXPECT_EQ(block.bytes(), records({"qystat_a=b", "\"x\"\n=\x01\xff", ""}));
}

TEST(AddStaticProperty, UsesThePrefixAloneForAnEmptyName) {
  PropertyBlock block;
  addStaticProperty(block, "", "value");
  EXPECT_EQ(block.bytes(), records({"qystat_", "value", ""}));
}

TEST(AddDynamicProperty, StoresAnEmptyValueAsTheByteFour) {
  PropertyBlock block;
  addDynamicProperty(block, "note", "");
  EXPECT_EQ(block.bytes(), records({"qydyna_note", "\x04", ""}));
}

TEST(AddDynamicProperty, KeepsBothPairsOfARepeatedNameInOrder) {
  PropertyBlock block;
  addStaticProperty(block, "update_url", "one");
  addDynamicProperty(block, "update_url", "two");
  addDynamicProperty(block, "update_url", "three");
  EXPECT_EQ(block.bytes(), records({"qystat_update_url", "one", "qydyna_update_url", "two",
                                    "qydyna_update_url", "three", ""}));
}

TEST(AddDynamicProperty, GrowsBeyondAnyFixedSize) {
  const std::string value(200'000, 'v');
  PropertyBlock block;
  std::string expected;
  for (int i = 0; i < 20; ++i) {
    addDynamicProperty(block, "name", value);
    expected += records({"qydyna_name", value});
  }
  EXPECT_EQ(block.bytes(), expected + '\0');
}

TEST(PropertyBlockPage, ShowsTheBlockThatItDescribes) {
  PropertyBlock block;
  addStaticProperty(block, "app_name", "Demo");
  addDynamicProperty(block, "note", "");
  EXPECT_EQ(block.bytes(), pageExample("formats/property-block.md"));
}

}  // namespace
}  // namespace quillory
