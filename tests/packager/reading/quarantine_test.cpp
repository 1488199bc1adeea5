#include "packager/reading/quarantine.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

TEST(Quarantine, KnowsThePlacesThatTheSystemMakes) {
  EXPECT_TRUE(isTranslocated("/private/var/folders/ab/T/AppTranslocation/0F2A-11/d/My App.app"));
  EXPECT_FALSE(isTranslocated("/Applications/My App.app"));
  EXPECT_FALSE(isTranslocated("/home/me/AppTranslocation"));
}

TEST(Quarantine, IsNothingThatThisSystemNotes) { EXPECT_FALSE(isQuarantined("/")); }

}  // namespace
}  // namespace quillory::pack
