#include "packager/reading/bundle_view.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

TEST(PlistText, FindsTextsAndUndoesEscapes) {
  const std::string plist =
      "<dict>\n<key>A</key>\n\t<string>x &amp; &lt;y&gt; &quot;&apos;</string><key>B</key><true/>";
  EXPECT_EQ(plistText(plist, "A"), "x & <y> \"'");
  EXPECT_EQ(plistText(plist, "C"), "");
  EXPECT_EQ(plistText("<key>A</key><string>open", "A"), "");
}

}  // namespace
}  // namespace quillory::pack
