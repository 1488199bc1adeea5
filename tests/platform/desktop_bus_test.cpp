#include "platform/gnustep/desktop_bus.h"

#include <gtest/gtest.h>

namespace quillory::platform {
namespace {

TEST(BusNameOf, IsTheIdentifierWhereThatIsAName) {
  EXPECT_EQ(busNameOf("com.example.Hello", "Hello"), "com.example.Hello");
  EXPECT_EQ(busNameOf("com.example.hello-2_x", ""), "com.example.hello-2_x");
  EXPECT_EQ(busNameOf("a.b", "x"), "a.b");
}

TEST(BusNameOf, IsMadeOfTheBundlesNameOtherwise) {
  for (const std::string identifier :
       {"", "single", ".a.b", "a.b.", "a..b", "com.2example", "com.ex ample", "com.ex/ample",
        "com.\xc3\xa4", "com.$(PRODUCT_NAME)"})
    EXPECT_EQ(busNameOf(identifier, "Hello"), "io.quillory.Hello") << identifier;
  EXPECT_EQ(busNameOf("a." + std::string(254, 'b'), "Hello"), "io.quillory.Hello");
  EXPECT_EQ(busNameOf("a." + std::string(253, 'b'), "Hello"), "a." + std::string(253, 'b'));
}

TEST(BusNameOf, PutsUnderscoresForWhatANameCannotHold) {
  EXPECT_EQ(busNameOf("", "My App.v2-x"), "io.quillory.My_App_v2_x");
  EXPECT_EQ(busNameOf("", "2048"), "io.quillory._2048");
  EXPECT_EQ(busNameOf("", "\xc3\xa4"), "io.quillory.__");
  EXPECT_EQ(busNameOf("", std::string(300, 'x')).size(), 255U);
}

TEST(BusNameOf, IsEmptyWithoutEither) { EXPECT_EQ(busNameOf("", ""), ""); }

TEST(ObjectPathOf, HasSlashesAndUnderscores) {
  EXPECT_EQ(objectPathOf("com.example.hello-2_x"), "/com/example/hello_2_x");
}

}  // namespace
}  // namespace quillory::platform
