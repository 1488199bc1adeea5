#include "packager/content/program_folder.h"

#include <gtest/gtest.h>

#include "packager/reading/program_image.h"

namespace quillory::pack {
namespace {

TEST(NativeTarget, IsThisSystemUnlessToldOtherwise) {
  // This very program says what this system is.
  EXPECT_EQ(nameOf(nativeTarget()), targetNameOf(programImageIn(QUILLORY_THIS_PROGRAM)));
}

}  // namespace
}  // namespace quillory::pack
