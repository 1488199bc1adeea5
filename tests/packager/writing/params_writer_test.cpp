#include "packager/writing/params_writer.h"

#include <gtest/gtest.h>

#include "formats/markers.h"
#include "packager/report/findings.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::records;

TEST(WriteParameters, PutsTheExampleOfThePageBehindTheMarker) {
  StringSink bytes;
  writeParameters(bytes, {{"jre_name", "JRE"}, {"show_no_ui", "true"}});
  EXPECT_EQ(bytes.bytes(), pageExample("formats/record-stream.md", 2) +
                               pageExample("formats/parameters-file.md", 1));
}

TEST(WriteParameters, WritesACountOfZeroWithoutPairs) {
  StringSink bytes;
  writeParameters(bytes, {});
  EXPECT_EQ(bytes.bytes(), paramsMarker() + records({"0"}));
}

TEST(WriteParameters, HasRoomForLongValues) {
  StringSink bytes;
  writeParameters(bytes, {{"splash_image", std::string(199998, 'A')}});
  EXPECT_THROW(writeParameters(bytes, {{"splash_image", std::string(199999, 'A')}}), PackError);
}

TEST(WriteParameters, KeepsTheirOrderAndNamesThatRepeat) {
  StringSink bytes;
  writeParameters(bytes, {{"b", "1"}, {"a", ""}, {"b", "2"}});
  EXPECT_EQ(bytes.bytes(), paramsMarker() + records({"3", "b", "1", "a", "", "b", "2"}));
}

TEST(WriteParameters, RefusesNamesThatTheLauncherWouldCut) {
  StringSink bytes;
  writeParameters(bytes, {{std::string(1022, 'n'), "x"}});
  EXPECT_THROW(writeParameters(bytes, {{std::string(1023, 'n'), "x"}}), PackError);
  EXPECT_THROW(writeParameters(bytes, {{std::string("a\0b", 3), "x"}}), PackError);
}

}  // namespace
}  // namespace quillory::pack
