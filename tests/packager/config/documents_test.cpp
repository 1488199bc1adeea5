#include "packager/config/documents.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

const DocumentConfig kLetter = {.name = "A <letter>", .extensions = {"letter", "ltr"}};
const DocumentConfig kCard = {.name = "Card", .extensions = {"card"}, .role = DocumentRole::kNone};

TEST(Documents, AreNamedAfterTheApplicationAndTheirFirstExtension) {
  EXPECT_EQ(typeIdentifier("com.example.hello", kLetter), "com.example.hello.letter");
  EXPECT_EQ(mediaType("com.example.hello", kLetter), "application/x-com.example.hello.letter");
}

TEST(Documents, AreClaimedBesideTheSchemesOfUrls) {
  EXPECT_EQ(desktopMediaTypes("a.b", {kLetter, kCard}, {"hello"}),
            "application/x-a.b.letter;application/x-a.b.card;x-scheme-handler/hello;");
  EXPECT_EQ(desktopMediaTypes("a.b", {}, {}), "");
}

TEST(Documents, AreDescribedToTheSharedDatabase) {
  EXPECT_EQ(mediaTypePackage("a.b", {}), "");
  EXPECT_EQ(mediaTypePackage("a.b", {kLetter, kCard}),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
            "  <mime-type type=\"application/x-a.b.letter\">\n"
            "    <comment>A &lt;letter&gt;</comment>\n"
            "    <glob pattern=\"*.letter\"/>\n"
            "    <glob pattern=\"*.ltr\"/>\n"
            "  </mime-type>\n"
            "  <mime-type type=\"application/x-a.b.card\">\n"
            "    <comment>Card</comment>\n"
            "    <glob pattern=\"*.card\"/>\n"
            "  </mime-type>\n"
            "</mime-info>\n");
}

}  // namespace
}  // namespace quillory::pack
